#include "Alerts.h"
#include "Samples.h"

#include <QorCore/XMLWriter.h>
#include <Tivor/XMLHandler.h>

#include <gtest/gtest.h>

#include <sstream>

namespace Qor::Tivor::Testing {

namespace {

using namespace Core::Testing;
using Object = std::shared_ptr<DataObject>;
using namespace std::string_literals;

/// What stands in the object's element.
std::string ContentOf(DataObject& object) {
    std::ostringstream stream;
    Core::XMLWriter writer;
    const auto serializer = object.GetSerializer();
    writer.StartTag(stream, "Data");
    writer.Attribute(stream, "encoding", serializer->GetXMLEncoding());
    serializer->ToXML(stream, writer);
    writer.EndTag(stream);
    const std::string text = stream.str();
    const std::size_t begin = text.find('>') + 1;
    return text.ends_with("/>") ? "" : text.substr(begin, text.rfind("</Data>") - begin);
}

/// Fills the object from its element, which has further attributes and, behind a document type, the content.
void ReadInto(const Object& object, const std::string& content, const std::string& attributes) {
    const std::string size = object->GetTypeID() >= eSIGNED_INTEGRAL_TYPE && object->GetTypeID() <= eFLOATING_POINT_TYPE
                                 ? " typename='" + object->GetTypeName() + "'"
                                 : "";
    const std::string document = "<!DOCTYPE Data SYSTEM 'none'><Data key='k' typeid='" +
                                 std::to_string(object->GetTypeID()) + "'" + size + ' ' + attributes + '>' + content +
                                 "</Data>";
    XMLHandler handler(object);
    const Core::Lock lock = handler.AcquireParseLock();
    Core::MemoryInputStream stream(document.data(), document.size());
    Core::XMLParser<XMLHandler>().Parse(stream, handler);
    EXPECT_EQ(handler.GetRoot(), object);
}

std::string SizeOf(DataObject& object) {
    return "size='" + std::to_string(object.GetSerializer()->GetDataSize_bytes()) + "'";
}

/// A scalar of T's kind and width.
template <class T>
Object Scalar(T value) {
    constexpr ETypeID kind = std::is_floating_point_v<T> ? eFLOATING_POINT_TYPE
                             : std::is_signed_v<T>       ? eSIGNED_INTEGRAL_TYPE
                                                         : eUNSIGNED_INTEGRAL_TYPE;
    const auto scalar = std::make_shared<ScalarData>("Kind", kind);
    Fill(*scalar, std::string(reinterpret_cast<const char*>(&value), sizeof value), sizeof value);
    return scalar;
}

template <class T>
Object Value(T value) {
    return MakeData(std::move(value));
}
Object Time(const char* text) { return Value(Core::Time::FromString(text)); }
Object Elapse(const char* text) { return Value(Core::Elapse::FromString(text)); }

/// Another value of the same class, without anything in common.
Object OtherThan(DataObject& object) {
    const Object others[] = {Scalar(std::int16_t{77}),
                             Scalar(std::uint16_t{77}),
                             Scalar(77.0),
                             Value("other"s),
                             Value(L"other"s),
                             Value(Core::Time(77)),
                             Value(Core::Elapse(77)),
                             Value(Core::Error("other")),
                             Value(Core::UnitDescriptor("Other", "o", 7, 7, {7})),
                             Value(UnitizedDouble(77, "Kelvin"))};
    for (const Object& other : others)
        if (other->GetTypeID() == object.GetTypeID())
            return other;
    ADD_FAILURE() << "no other value of this class";
    return nullptr;
}

/// Stands for an object whose serializer it keeps.
class OneSerializer final : public DataObject {
public:
    explicit OneSerializer(const Object& object) : m_object(object), m_serializer(object->GetSerializer()) {}

    ETypeID GetTypeID() override { return m_object->GetTypeID(); }
    std::string GetTypeName() const override { return m_object->GetTypeName(); }
    bool HoldsType(const std::type_info& type) const override { return m_object->HoldsType(type); }
    bool HoldsSameTypeAs(const DataObject& other) const override { return m_object->HoldsSameTypeAs(other); }
    std::shared_ptr<Serializer> GetSerializer() override { return m_serializer; }
    std::shared_ptr<DataObject> Clone() override { return m_object->Clone(); }

private:
    Object m_object;
    std::shared_ptr<Serializer> m_serializer;
};

const Core::UnitDescriptor furlong("Furlong", "fur", 201.168, 0, {1});

Core::Error DiskFull() { return SamplesOf(As<Core::Error>()).back(); }

} // namespace

TEST(XMLValues, HaveTheFormThatIsDocumented) {
    // Units that the dictionary has, but whose names a text would not keep.
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    const Core::UnitDescriptor strange("\x01", "", notANumber, -0.0, {-128, 127});
    Core::UnitDictionary::Instance().Add(strange);
    const std::string emptyDescriptor =
        R"(<Descriptor name="" symbol="" scale="1" offset="0" exponents="0 0 0 0 0 0 0 0"/>)";
    const std::string furlongDescriptor =
        R"(<Descriptor name="Furlong" symbol="fur" scale="201.168" offset="0" exponents="1 0 0 0 0 0 0 0"/>)";
    const auto lines = [](std::initializer_list<std::string> texts) {
        std::string all;
        for (const std::string& text : texts)
            all += "\n  " + text;
        return all + '\n';
    };
    const std::pair<Object, std::string> rows[] = {
        {Value(""s), ""},
        {Value(" a <&> \r\n\t\"'\n"s), " a &lt;&amp;&gt; &#13;\n\t\"'\n"},
        {Value(L"]]>\u00F6\U0001F600"s), "]]&gt;\xC3\xB6\xF0\x9F\x98\x80"},
        {Value("\xFF\xFE"s), "<![CDATA[//4=]]>"},
        {Value("a\0"s), "<![CDATA[YQA=]]>"},
        {Value(L"\uFFFE"s), "<![CDATA[77++]]>"},
        {Value(L"\x1F"s), "<![CDATA[Hw==]]>"},
        {Time("2024-01-31T12:34:56.1234567Z"), "2024-01-31T12:34:56.1234567Z"},
        {Elapse("-1.5"), "-1.5000000"},
        {Scalar(std::int8_t{65}), "65"},
        {Scalar(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808"},
        {Scalar(0.1f), "0.1"},
        {Scalar(std::bit_cast<float>(0x7F812345u)), "nan(7F812345)"},
        {Scalar(-std::numeric_limits<double>::infinity()), "-inf"},
        {Value(Core::UnitDescriptor()), lines({emptyDescriptor})},
        {Value(*Core::UnitDictionary::Instance().Get("Celsius")), lines({"<Unit>Celsius</Unit>"})},
        {Value(Core::UnitDescriptor("Millimeter", "mm", 1e-3)),
         lines(
             {R"(<Descriptor name="Millimeter" symbol="mm" scale="0.001" offset="0" exponents="0 0 0 0 0 0 0 0"/>)"})},
        {Value(strange),
         lines({R"(<Descriptor name="AQ==" nameencoding="def/base64" symbol="" scale="nan" offset="-0" )"
                R"(exponents="-128 127 0 0 0 0 0 0"/>)"})},
        {Value(UnitizedDouble(2.5)), lines({"<Value>2.5</Value>"})},
        {Value(UnitizedDouble(-0.0, "Millimeter")), lines({R"(<Value unit="Millimeter">-0</Value>)"})},
        {Value(UnitizedDouble(1, furlong.Clone())), lines({"<Value>1</Value>", furlongDescriptor})},
        {Value(DiskFull()), R"xml(
  <Error class="IOError" message="Disk full" category="Qor.Tivor.BinaryDataFile" severity="2" signature="void Save()" function="Save" source="BinaryDataFile" line="123">
    <CallStack>
      <Context signature="int main()" function="main" source="Program" line="7"/>
      <Context signature="void Store()" function="Store" source="Store" line="4294967295"/>
    </CallStack>
    <UnwindStack>
      <Context signature="void Flush()" function="Flush" source="DataFile" line="0"/>
    </UnwindStack>
    <Variables>
      <Variable name="File" value="a.qordata"/>
      <Variable name="Key" value=""/>
    </Variables>
  </Error>
)xml"},
    };
    for (const auto& [object, content] : rows) {
        SCOPED_TRACE(content);
        EXPECT_EQ(ContentOf(*object), content);
        const Object twin = OtherThan(*object);
        const std::string encoding = object->GetSerializer()->GetXMLEncoding();
        EXPECT_EQ(encoding, content.starts_with("<![") ? "def/base64" : "");
        ReadInto(twin, content, SizeOf(*object) + " encoding='" + encoding + '\'');
        EXPECT_EQ(DataOf(*twin), DataOf(*object));
    }
}

TEST(XMLValues, AreReadAsPeopleTypeThem) {
    const std::pair<std::string, Object> rows[] = {
        {"a<!--x-->b<![CDATA[<c>]]>&amp;&#65;\n ", Value("ab<c>&A\n "s)},
        {"\xC3\xB6<![CDATA[]]>&#x1F600;", Value(L"\u00F6\U0001F600"s)},
        {"\n  2024-01-31T13:34:56.5+01:00<!-- noon -->\n", Time("2024-01-31T12:34:56.5Z")},
        {"\t-1&#46;5\n", Elapse("-1.5")},
        {"<![CDATA[-]]>1<!-- -->5", Scalar(std::int64_t{-15})},
        {"\r\n007", Scalar(std::uint32_t{7})},
        {"INF", Scalar(std::numeric_limits<double>::infinity())},
        {"<Unit>\n <![CDATA[Milli]]>meter </Unit>", Value(*Core::UnitDictionary::Instance().Get("Millimeter"))},
        {"<Descriptor/>", Value(Core::UnitDescriptor())},
        {"<Descriptor exponents=' -1  2 0&#9;0 0 0 0 0 ' offset='3' symbol='s' scale=' 2 ' name=' n '/>",
         Value(Core::UnitDescriptor(" n ", "s", 2, 3, {-1, 2}))},
        {"<Unit>Meter</Unit><Descriptor name='n'/>", Value(*Core::UnitDictionary::Instance().Get("Meter"))},
        {"<Descriptor symbol='fur' scale='201.168' exponents='1 0 0 0 0 0 0 0' nameencoding='def/base64' "
         "name='RnVybG9uZw=='/><Value> 1 </Value>",
         Value(UnitizedDouble(1, furlong.Clone()))},
        {"<Descriptor name='n'/>words<Value unit=' Meter '>2<!-- -->5</Value>", Value(UnitizedDouble(25, "Meter"))},
        {"<Value>1</Value><Unit>Meter</Unit>", Value(UnitizedDouble(1, "Meter"))},
        {"<Error/>", Value(Core::Error())},
        {R"(<Error line='123' source='BinaryDataFile' function='Save' signature='void Save()' severity=' 2 '
              category='Qor.Tivor.BinaryDataFile' messageencoding='def/base64' message='RGlzayBmdWxs' class='IOError'>
            <Variables><Variable value='a.qordata' name='File'/><!-- --><Variable name='Key'/></Variables>
            <UnwindStack><Context source='DataFile' function='Flush' signature='void Flush()'></Context></UnwindStack>
            <CallStack><Context signature='int main()' function='main' source='Program' line='7'/></CallStack>
            <CallStack><Context signature='void Store()' function='Store' source='Store' line='4294967295'/></CallStack>
            </Error>)",
         Value(DiskFull())},
    };
    for (const auto& [content, object] : rows) {
        SCOPED_TRACE(content);
        const Object twin = OtherThan(*object);
        ReadInto(twin, content, SizeOf(*object));
        EXPECT_EQ(DataOf(*twin), DataOf(*object));
    }
}

TEST(XMLValues, PassOverElementsThatNobodyKnows) {
    const std::string note = "<Note unit='x'><Value>9</Value><Unit>x</Unit></Note>";
    const std::tuple<std::string, Object, std::size_t> rows[] = {
        {note + "<Value unit='Meter'>1</Value>" + note, Value(UnitizedDouble(1, "Meter")), 2},
        {note + "<Unit>Meter</Unit><Value>1</Value>", Value(*Core::UnitDictionary::Instance().Get("Meter")), 2},
        {"<Descriptor name='n'>" + note + "<Unit>Meter</Unit></Descriptor>", Value(Core::UnitDescriptor("n", "")), 2},
        {"<Context/><Error>" + note + "<Context/><CallStack><Variable/><Data/></CallStack></Error>",
         Value(Core::Error()), 5},
    };
    for (const auto& [content, object, count] : rows) {
        SCOPED_TRACE(content);
        const Object twin = OtherThan(*object);
        Warnings warnings;
        ReadInto(twin, content, SizeOf(*object));
        EXPECT_EQ(DataOf(*twin), DataOf(*object));
        EXPECT_EQ(warnings.seen.size(), count);
        EXPECT_TRUE(warnings.Tell()[0].starts_with("SkippingUnknownTag [Qor.Tivor.Serializer] Skipping unknown XML tag "
                                                   "named "));
    }
    const Object refused = Value(UnitizedDouble(77));
    Warnings refusing(true);
    RaisedBy<Core::Error>([&] { ReadInto(refused, "<Value>1</Value><Note/>", ""); });
    EXPECT_EQ(DataOf(*refused), DataOf(*Value(UnitizedDouble(77))));
}

TEST(XMLValues, KeepTheirValueWhenTheirElementIsFaulty) {
    const auto expected = [](const std::string& what, const std::string& found, const char* category = "Serializer") {
        return "IOError [Qor.Tivor."s + category + "] Expected " + what + ", found " + found;
    };
    const std::string entity = "a reference to the unknown entity \"foo\"";
    const std::string tag =
        "InvalidDataTag [Qor.Tivor.XMLHandler.OnStartTagContent] Invalid Tivor XML data tag named b";
    const std::string encoding = "InvalidXMLEncoding [Qor.Tivor.Serializer.GetXMLContentHandler] Invalid xml encoding "
                                 "of \"zip\" for XML data with key = k";
    const std::string unknown = "UnitNotFound [Qor.Core.UnitDictionary] Ell unit not found in the unit dictionary";
    const std::string badTime = "Error [Qor.Tivor.Serializer] ";
    const auto scalar = [&](const std::string& kind, const std::string& found) {
        return expected(kind + " bytes for a scalar value of type Kind", '"' + found + '"', "ScalarSerializer");
    };
    const auto attribute = [&](const std::string& what, const std::string& name, const std::string& found) {
        return expected(what + " in the attribute \"" + name + '"', '"' + found + '"');
    };
    const std::string count = "a number of 32 bits without sign";
    const auto kept = [](const Object& object) { return std::make_shared<OneSerializer>(object); };
    const Object text = kept(Value("x"s));
    const Object wide = kept(Value(L"x"s));
    const Object time = kept(Value(Core::Time(1)));
    const Object elapse = kept(Value(Core::Elapse(1)));
    const Object int8 = kept(Scalar(std::int8_t{1}));
    const Object uint16 = kept(Scalar(std::uint16_t{1}));
    const Object real = kept(Scalar(1.0));
    const Object unit = kept(Value(Core::UnitDescriptor("n", "")));
    const Object unitized = kept(Value(UnitizedDouble(1)));
    const Object error = kept(Value(Core::Error()));
    struct Row {
        Object object;
        std::string attributes;
        std::string content;
        std::string text;
    };
    std::vector<Row> rows = {
        {text, "", "a&foo;b", expected("text", entity)},
        {wide, "", "a<b/>", tag},
        {text, "size='1' encoding='zip'", "a", encoding},
        {time, "", "noon", badTime + RaisedBy<Core::Error>([] { Core::Time::FromString("noon"); }).GetText()},
        {elapse, "", " 1,5 ", badTime + RaisedBy<Core::Error>([] { Core::Elapse::FromString("1,5"); }).GetText()},
        {int8, "size='1'", "128", scalar("a signed integer of 1", "128")},
        {int8, "size='4'", "A", scalar("a signed integer of 4", "A")},
        {uint16, "size='2'", " -1", scalar("an unsigned integer of 2", " -1")},
        {int8, "size='3'", "1",
         "InvalidScalarSize [Qor.Tivor.ScalarSerializer] Invalid size of 3 reported for scalar value of type Kind"},
        {real, "size='4'", "1e39", scalar("a floating-point number of 4", "1e39")},
        {real, "size='8'", "&foo;", expected("text", entity, "ScalarSerializer")},
        {unit, "", "<Note/>", expected("an element \"Unit\" or \"Descriptor\" in the data of a unit", "none")},
        {unit, "", "<Unit>Ell</Unit>", unknown},
        {unit, "", "<Unit><b/></Unit>", tag},
        {unit, "", "<Descriptor scale='x'/>", attribute("a number", "scale", "x")},
        {unitized, "", "<Value>2,5</Value>", expected("a number in the element \"Value\"", "\"2,5\"")},
        {unitized, "", "<Value unit='Ell'>1</Value><Descriptor/>", unknown},
        {unitized, "", "<Descriptor name='n'/>",
         expected("an element \"Value\" in the data of a unitized value", "none")},
        {unitized, "", "<Value unit='Meter'>2</Value><Descriptor scale='x'/>", attribute("a number", "scale", "x")},
        {error, "", "<CallStack/>", expected("an element \"Error\" in the data of an error", "none")},
        {error, "", "<Error class='E'/><Error line='-1'/>", attribute(count, "line", "-1")},
        {error, "", "<Error><CallStack><Context/><Context line='4294967296'/></CallStack></Error>",
         attribute(count, "line", "4294967296")},
    };
    for (const std::string list : {"", "1 0 0 0 0 0 0", "0 0 0 0 0 0 0 0 0", "0 0 0 0 0 0 0 128", "0,0 0 0 0 0 0 0 0"})
        rows.push_back({unit, "", "<Descriptor exponents='" + list + "'/>",
                        attribute("eight numbers from -128 to 127", "exponents", list)});
    for (const Row& row : rows) {
        SCOPED_TRACE(row.attributes + '>' + row.content);
        const std::string before = DataOf(*row.object);
        const std::string raised = ErrorOf([&] { ReadInto(row.object, row.content, row.attributes); });
        EXPECT_EQ(raised.substr(0, raised.find(';')), row.text);
        EXPECT_EQ(DataOf(*row.object), before);
        // Nothing is left of the faulty element.
        if (row.object->GetTypeID() >= eERROR && row.text.starts_with("IOError"))
            RaisedBy<Core::IOError>([&] { ReadInto(row.object, "", ""); });
        ReadInto(row.object, ContentOf(*row.object), SizeOf(*row.object));
        EXPECT_EQ(DataOf(*row.object), before);
    }
}

TEST(XMLValues, NeedTheWidthOfScalars) {
    const auto refusal = [](const std::unordered_map<std::string, std::string>& attributes) {
        return ErrorOf([&] { Scalar(1)->GetSerializer()->GetXMLContentHandler(attributes); });
    };
    const std::string missing = "MissingXMLAttribute [Qor.Tivor.ScalarSerializer] Missing required ";
    EXPECT_EQ(refusal({{"size", "4"}}), missing + "typename attribute for XML data with key = ");
    EXPECT_EQ(refusal({{"typename", "Kind"}, {"key", "%1%"}}), missing + "size attribute for XML data with key = %1%");
    for (const std::string size : {"", "0", "four", "16", "18446744073709551620"})
        EXPECT_EQ(refusal({{"typename", "Kind"}, {"size", size}}), "InvalidScalarSize [Qor.Tivor.ScalarSerializer] "
                                                                   "Invalid size of " +
                                                                       size +
                                                                       " reported for scalar value of type Kind");
}

} // namespace Qor::Tivor::Testing
