#include "Values.h"

#include "Elements.h"
#include "Measured.h"
#include "PositionForms.h"
#include "Properties.h"

#include <Tivor/ArrayDataObjects.h>
#include <Tivor/ScalarData.h>
#include <Tivor/UnboundDataObject.h>

#include <typeindex>
#include <unordered_map>

namespace Qor::Tivor::Tool {

namespace {

/// How objects of one class are shown.
struct Form {
    bool isOneElement;
    void (*print)(DataObject& object, const LineSink& print);
    Json (*toJson)(DataObject& object);
};
using Forms = std::unordered_map<std::type_index, Form>;

template <class T>
const T& ValueOf(DataObject& object) {
    return static_cast<Data<T>&>(object).GetValue();
}

template <class T>
void AddValue(Forms& forms) {
    forms.emplace(typeid(Data<T>),
                  Form{!AnyMatrix<T> && !AnyMap<T> && !AnySequence<T>,
                       [](DataObject& object, const LineSink& print) { Lines(ValueOf<T>(object), print); },
                       [](DataObject& object) { return ValueJson(ValueOf<T>(object)); }});
}

template <class T>
void AddArray(Forms& forms) {
    forms.emplace(typeid(Array<T>), Form{false,
                                         [](DataObject& object, const LineSink& print) {
                                             Lines(static_cast<const Array<T>&>(object).GetElements(), print);
                                         },
                                         [](DataObject& object) {
                                             return ValueJson(static_cast<const Array<T>&>(object).GetElements());
                                         }});
}

template <class Visitor>
auto VisitScalar(const ScalarData& scalar, Visitor visit) {
    switch (scalar.GetTypeID()) {
    case eSIGNED_INTEGRAL_TYPE:
        return visit(scalar.GetValue<std::int64_t>());
    case eUNSIGNED_INTEGRAL_TYPE:
        return visit(scalar.GetValue<std::uint64_t>());
    default:
        return scalar.GetSize_bytes() == sizeof(float) ? visit(scalar.GetValue<float>())
                                                       : visit(scalar.GetValue<double>());
    }
}

void AddScalar(Forms& forms) {
    forms.emplace(
        typeid(ScalarData),
        Form{true,
             [](DataObject& object, const LineSink& print) {
                 print(VisitScalar(static_cast<ScalarData&>(object), [](auto number) { return ElementText(number); }));
             },
             [](DataObject& object) {
                 return VisitScalar(static_cast<ScalarData&>(object), [](auto number) { return ElementJson(number); });
             }});
}

template <class T>
void AddPositions(Forms& forms) {
    using Wrapper = DataOf<T>;
    forms.emplace(typeid(Wrapper),
                  Form{isOneLine<T>,
                       [](DataObject& object, const LineSink& print) {
                           PositionLines(static_cast<Wrapper&>(object).GetValue(), print);
                       },
                       [](DataObject& object) { return PositionJson(static_cast<Wrapper&>(object).GetValue()); }});
}

std::string DescribeUnbound(const UnboundData& data) {
    return "unbound data of class " + Show(data.GetTypeName()) + ", version " + Show(data.GetVersion()) + ", module " +
           Show(data.GetModule()) + ", " + Count(data.GetDataCapacity(), "byte", "bytes");
}

template <class T>
void AddUnbound(Forms& forms) {
    forms.emplace(
        typeid(T),
        Form{true, [](DataObject& object, const LineSink& print) { print(DescribeUnbound(static_cast<T&>(object))); },
             [](DataObject& object) -> Json {
                 const auto& data = static_cast<T&>(object);
                 return {{"unbound",
                          {{"class", TextJson(data.GetTypeName())},
                           {"version", TextJson(data.GetVersion())},
                           {"module", TextJson(data.GetModule())},
                           {"bytes", data.GetDataCapacity()}}}};
             }});
}

Forms MakeForms() {
    Forms forms;
#define TIVOR_VALUE(T, id, name) AddValue<T>(forms);
    TIVOR_BUILT_IN_VALUES TIVOR_COLLECTION_VALUES
#undef TIVOR_VALUE
#define TIVOR_ROW(T, STEM, code, position, name) AddArray<T>(forms);
        TIVOR_ARRAY_ELEMENT_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
            AddScalar(forms);
#define TIVOR_VALUE(T, id, name) AddPositions<T>(forms);
    TIVOR_POSITION_1D_VALUES TIVOR_POSITION_2D_VALUES
#undef TIVOR_VALUE
        AddUnbound<UnboundData>(forms);
    AddUnbound<UnboundScalarArray>(forms);
    AddUnbound<UnboundScalarContainer>(forms);
    return forms;
}

/// Classes of plug-ins.
constexpr Form otherForm{true, [](DataObject& object, const LineSink& print) { print(OneLine(object.ToString())); },
                         [](DataObject& object) -> Json {
                             return {{"class", TextJson(object.GetTypeName())}, {"text", TextJson(object.ToString())}};
                         }};

const Form& FormOf(DataObject& object) {
    static const auto* const forms = new Forms(MakeForms());
    const auto found = forms->find(typeid(object));
    return found != forms->end() ? found->second : otherForm;
}

void PrintFacts(std::ostream& out, const MeasuredFacts& facts, const std::string& indent) {
    out << Show(facts.className) << " of " << Describe(facts) << '\n';
    if (const std::string statistics = DescribeStatistics(facts); !statistics.empty())
        out << indent << statistics;
}

/// The properties tell the names of values, where the entries are theirs.
void PrintTree(std::ostream& out, const DataContainer& container, const PropertyContainer* properties,
               const std::string& indent) {
    const std::string deeper = indent + "  ";
    for (const auto& [key, object] : container) {
        out << indent << Show(key) << ':';
        if (const auto name = properties != nullptr ? FindNameOfValue(*properties, key) : std::nullopt)
            out << ' ' << Show(*name) << '\n';
        else if (const auto below = EntriesIn(*object)) {
            if (const auto facts = FindMeasuredFacts(*object))
                PrintFacts(out << ' ', *facts, deeper);
            else
                out << '\n';
            PrintTree(out, *below, PropertiesOf(*object).get(), deeper);
        } else if (const Form& form = FormOf(*object); form.isOneElement) {
            form.print(*object, [&](const std::string& line) { out << ' ' << line << '\n'; });
        } else {
            out << '\n';
            form.print(*object, [&](const std::string& line) { out << deeper << line << '\n'; });
        }
    }
}

Json EntriesJson(const DataContainer& container, const PropertyContainer* properties) {
    Json json = Json::object();
    for (const auto& [key, object] : container) {
        const auto name = properties != nullptr ? FindNameOfValue(*properties, key) : std::nullopt;
        AddMember(json, MemberName(key), name ? TextJson(*name) : ToJson(*object));
    }
    return json;
}

} // namespace

std::shared_ptr<const DataContainer> EntriesIn(DataObject& object) {
    if (auto* const wrapper = dynamic_cast<Data<DataContainer>*>(&object))
        return wrapper->GetData();
    const auto* const holder = dynamic_cast<const Details::ContentHolder*>(&object);
    return holder != nullptr ? holder->GetContent() : nullptr;
}

void PrintText(std::ostream& out, const DataContainer& container) { PrintTree(out, container, nullptr, ""); }

void PrintText(std::ostream& out, DataObject& object) {
    if (const auto facts = FindMeasuredFacts(object))
        PrintFacts(out, *facts, "");
    if (const auto entries = EntriesIn(object))
        PrintTree(out, *entries, PropertiesOf(object).get(), "");
    else if (typeid(object) == typeid(Data<std::string>))
        out << ValueOf<std::string>(object) << '\n';
    else if (typeid(object) == typeid(Data<std::wstring>))
        out << Utf8Of(ValueOf<std::wstring>(object)) << '\n';
    else
        FormOf(object).print(object, [&](const std::string& line) { out << line << '\n'; });
}

std::string BriefText(DataObject& object) {
    std::string text;
    if (const Form& form = FormOf(object); form.isOneElement && !EntriesIn(object))
        form.print(object, [&](const std::string& line) { text += line; });
    return text.empty() ? "a " + object.GetTypeName() : text;
}

Json ToJson(DataObject& object) {
    const auto entries = EntriesIn(object);
    return entries ? EntriesJson(*entries, PropertiesOf(object).get()) : FormOf(object).toJson(object);
}

Json ToJson(const DataContainer& container) { return EntriesJson(container, nullptr); }

} // namespace Qor::Tivor::Tool
