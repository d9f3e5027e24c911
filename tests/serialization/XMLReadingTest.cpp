#include "Alerts.h"
#include "Samples.h"
#include "StoredBytes.h"

#include <QorCore/Base64.h>
#include <Tivor/DataContainer.h>

#include <gtest/gtest.h>

// What readers of XML accept besides what is written, and what they say of the rest.

namespace Qor::Tivor::Testing {

namespace {

using namespace std::string_literals;
using namespace Core::Testing;

std::string Describe(const Core::AlertInfo& alert) {
    return alert.GetTypeName() + ' ' + std::to_string(alert.GetSeverity()) + ' ' + alert.GetCategory() + ": " +
           alert.GetText();
}

/// The entries, or the error with its place and keys, and the warnings; the content stands in the second line.
std::string OutcomeOf(const std::string& content) {
    const Warnings warnings;
    std::string outcome;
    try {
        const auto container = DataContainer::FromXMLString("<DataContainer>\n" + content + "</DataContainer>");
        for (const DataContainer::Entry& entry : *container)
            outcome += entry.key + '=' + entry.object->ToString() + ' ';
    } catch (const Core::Error& error) {
        outcome = Describe(error) + " @" + error.GetVariable("Line") + ':' + error.GetVariable("Column");
        for (const auto& variable : error.GetVariables())
            outcome += variable.name == "Key" ? ' ' + variable.value : "";
    }
    for (const Core::Warning& warning : warnings.seen)
        outcome += "| " + Describe(warning);
    return outcome;
}

std::string Element(const std::string& attributes, const std::string& content) {
    return "<Data key='k' " + attributes + '>' + content + "</Data>";
}

/// The bytes of data in that encoding, or what reading it raises.
std::string DecodedBytes(const char* encoding, const std::string& content, const std::string& size) {
    try {
        const auto container = DataContainer::FromXMLString(
            "<DataContainer>" +
            Element("typeid='0' typename='T' size='" + size + "' encoding='def/" + encoding + '\'', content) +
            "</DataContainer>");
        return DataOf(*container->Get("k"));
    } catch (const EndOfStreamOnInput&) {
        return "too few";
    } catch (const Core::Error& error) {
        return error.GetTypeName() + ": " + error.GetText();
    }
}

} // namespace

TEST(XMLReading, SaysWhatItMisses) {
    const std::string tag =
        "InvalidDataTag 2 Qor.Tivor.XMLHandler.OnStartTagContent: Invalid Tivor XML data tag named ";
    const std::string unknownTag =
        "| SkippingUnknownTag 1 Qor.Tivor.DataContainerXMLHandler: Skipping unknown XML tag named ";
    const std::string frame = "2 Qor.Tivor.Serializer.GetXMLContentHandler: ";
    const std::string attribute = "IOError 2 Qor.Tivor.XMLHandler: Expected ";
    const auto failed = [](const std::string& description, const std::string& reason) {
        return "| DataObjectCreationFailed 1 Qor.Tivor.DataContainerXMLHandler: Attempt to deserialize data named k "
               "failed to create the needed DataObject ( " +
               description + ") for the following reason: \r\n" + reason;
    };
    const std::string bool1 = "<Data key='b' typeid='1' encoding='def/hex64'>1</Data>";
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {bool1, "b=true "},
        // Whatever the order, quotes and references of attributes.
        {"<Data encoding=\"def/hex64\" typeid='&#54;' other='x' key=\"&#x6B;\">7</Data>", "k=7 "},
        {Element("typeid='6' encoding='def/hex64'", "7") + Element("typeid='6' encoding='def/hex64'", "8") + bool1,
         "k=8 b=true "},
        {"<Data typeid='6' encoding='def/hex64'>7</Data>", "=7 "},
        {"<Data key='aw==' keyencoding='def/base64' typeid='6' encoding='def/hex64'>7</Data>", "k=7 "},
        {Element("typeid='125'", bool1), "k=DataContainer with 1 entries "},
        {Element("typeid='134' encoding='def/hex64'", "7"), "k=7 "}, // bit 7 is a flag
        {"text " + bool1 + "<!-- c --><![CDATA[x]]><?pi?>", "b=true "},
        // Elements that are not known.
        {"<other k='1'>x<Data/><other/></other>" + bool1, "b=true " + unknownTag + "other"},
        {"<data/>" + bool1 + "<x:Data/>", "b=true " + unknownTag + "data" + unknownTag + "x:Data"},
        {Element("typeid='6' encoding='def/hex64'", "7<x/>"), tag + "x @2:48 k"},
        {"<DataContainer key='s'>" + Element("typeid='6' encoding='def/hex64'", "<Data/>") + "</DataContainer>",
         tag + "Data @2:70 k s"},
        // What an element is.
        {Element("", "7"), tag + "Data @2:1 k"},
        {Element("typeid='x'", "7"), tag + "Data @2:1 k"},
        {Element("typeid=' 6'", "7"), tag + "Data @2:1 k"},
        {"<DataContainer key='k' typeid='6'/>", tag + "DataContainer @2:1 k"},
        {Element("typeid='19' size='3'", "<x/>7") + bool1,
         "b=true " + failed(", version , from module *", "type identifier 19 names no built-in class")},
        {Element("typeid='99999999999999999999'", "7") + bool1,
         "b=true " + failed(", version , from module *", "type identifier 65407 names no built-in class")},
        // Encodings and sizes.
        {Element("typeid='6'", "7"),
         "MissingXMLAttribute " + frame + "Missing required encoding attribute for XML data with key = k @2:1 k"},
        {Element("typeid='41' encoding='def/base64'", ""),
         "MissingXMLAttribute " + frame + "Missing required size attribute for XML data with key = k @2:1 k"},
        {Element("typeid='6' encoding='def/x'", "7"),
         "InvalidXMLEncoding " + frame + "Invalid xml encoding of \"def/x\" for XML data with key = k @2:1 k"},
        {Element("typeid='41' size='0x9' encoding='def/base64'", ""),
         attribute + "a decimal number in the attribute \"size\", found \"0x9\" @2:1 k"},
        {"<Data key='k' keyencoding='hex' typeid='6' encoding='def/hex64'>7</Data>",
         attribute + "def/base64 in the attribute \"keyencoding\", found \"hex\" @2:1"},
        {"<Data key='a' keyencoding='def/base64' typeid='6' encoding='def/hex64'>7</Data>",
         attribute + "Base64 in the attribute \"key\", found \"a\" @2:1"},
        {"<Data key='k' key='k' typeid='6' encoding='def/hex64'>7</Data>",
         "XMLParseError 2 Qor.Core.XMLParser: line 2, column 15: duplicate attribute @2:15"},
    };
    for (const auto& [content, outcome] : rows)
        EXPECT_EQ(OutcomeOf(content), outcome) << content;
}

TEST(XMLReading, TellsRootsApart) {
    for (const char* const document :
         {"<DataContainer/>", "<Data typeid='125'/>", "<DataContainer key='k' typeid='253'/>"})
        EXPECT_TRUE(DataContainer::FromXMLString(document)->IsEmpty()) << document;
    for (const char* const document :
         {"<Other/>", "<Data/>", "<Data typeid='6' encoding='def/hex64'>7</Data>", "<DataContainer typeid='6'/>"})
        RaisedBy<InvalidDataTag>([&] { DataContainer::FromXMLString(document); });
}

TEST(XMLReading, TakesNumbersAsTheirBytes) {
    const std::string sixteen = Bytes("10 00 00 00");
    const std::string all(8, '\xFF');
    const std::tuple<const char*, const char*, const char*, std::string> rows[] = {
        {"uint64", "0x10", "4", sixteen},
        {"uint64", "020", "4", sixteen},
        {"uint64", " 16 ", "4", sixteen},
        {"uint64", "1<!-- -->6", "4", sixteen},
        {"uint64", "<![CDATA[16]]>", "4", sixteen},
        {"uint64", "&#49;6", "4", sixteen},
        {"hex64", "0x10", "4", sixteen},
        {"hex64", "abcdefABCDEF", "8", Bytes("EF CD AB EF CD AB 00 00")},
        {"hex64", "4142434445464748", "8", "HGFEDCBA"},
        {"hex64", "414243", "2", "CB"},
        {"hex64", "41", "0", ""},
        {"uint64", "18446744073709551615", "8", all},
        // What is no number is what the conversion makes of it.
        {"uint64", "18446744073709551616", "8", all},
        {"uint64", "-1", "8", all},
        {"uint64", "", "8", std::string(8, '\0')},
        {"hex64", "1 and more", "1", "\1"},
        // There are eight bytes.
        {"uint64", "16", "9", "too few"},
        {"hex64", "1<x/>6", "4", "InvalidDataTag: Invalid Tivor XML data tag named x"},
    };
    for (const auto& [encoding, content, size, bytes] : rows)
        EXPECT_EQ(DecodedBytes(encoding, content, size), bytes) << encoding << ' ' << content;
}

TEST(XMLReading, TakesBase64InTextAndInASection) {
    const std::string two = "IOError: Expected one section of Base64, found ";
    const std::tuple<const char*, const char*, std::string> rows[] = {
        {"<![CDATA[YWJjZGVm]]>", "6", "abcdef"},
        {"YWJjZGVm", "6", "abcdef"},
        {"\n  YWJj\r\n\tZ GVm\n", "6", "abcdef"},
        {"\n  <!-- c --><![CDATA[YWJjZGVm]]>\n", "6", "abcdef"},
        {"YWJj<!-- c -->ZGVm", "6", "abcdef"},
        {"YWJjZGV&#109;", "6", "abcdef"},
        {"YWJjZGVmZw==", "7", "abcdefg"},
        {"", "0", ""},
        {"<![CDATA[ ]]>", "0", ""},
        {"<![CDATA[YWJjZGVm]]>", "5", "IOError: Expected 5 bytes in Base64, found more"},
        {"<![CDATA[YWJjZGVm]]>", "7", "too few"},
        {"<![CDATA[YWJj]]><![CDATA[ZGVm]]>", "6", "too few"},
        {"<![CDATA[YWJjZGVm]]><![CDATA[]]>", "6", two + "two"},
        {"<![CDATA[YWJjZGVm]]>x", "6", two + "text beside it"},
        {"YWJjZGVm<x/>", "6", "InvalidDataTag: Invalid Tivor XML data tag named x"},
    };
    for (const auto& [content, size, bytes] : rows)
        EXPECT_EQ(DecodedBytes("base64", content, size), bytes) << content << ' ' << size;
    for (const char* const wrong : {"YWJjZGV", "YWJjZGV*", "YWJjZA==ZGVm", "=", "YWJ=ZGVm"})
        for (const std::string& content : {std::string(wrong), "<![CDATA["s + wrong + "]]>"})
            EXPECT_TRUE(DecodedBytes("base64", content, "6").starts_with("InvalidBase64: ")) << content;
}

TEST(XMLReading, TakesReferencesToEntitiesForNothing) {
    const auto read = [](const std::string& content) {
        return DataContainer::FromXMLString("<!DOCTYPE DataContainer SYSTEM 'absent'><DataContainer>" + content +
                                            "</DataContainer>");
    };
    EXPECT_TRUE(read("&e;")->IsEmpty());
    const std::string expected = "Expected text, found a reference to the unknown entity \"e\"";
    for (const char* const encoding : {"hex64", "uint64", "base64"})
        EXPECT_EQ(RaisedBy<Core::IOError>([&] {
                      read(Element("typeid='0' typename='T' size='3' encoding='def/"s + encoding + '\'', "AA&e;AA"));
                  }).GetText(),
                  expected);
    const auto error = RaisedBy<Core::IOError>([&] { read(Element("typeid='0' typename='T'", "kept &e;")); });
    EXPECT_EQ(error.GetText(),
              "Expected content that means the same in any document, found a reference to the entity \"e\"");
    EXPECT_EQ(error.GetCategory(), "Qor.Tivor.CachingContentHandler.BindData");
    RaisedBy<Core::IOError>([] { DataContainer::FromXMLString("<DataContainer>&e;</DataContainer>"); });
}

} // namespace Qor::Tivor::Testing
