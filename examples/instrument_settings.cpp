// An instrument with a page of settings: described in a table, guarded, heard, saved in both forms and restored.
#include <Tivor/BinaryDataFile.h>
#include <Tivor/PropertyHandlers.h>
#include <Tivor/XMLDataFile.h>

#include <iostream>
#include <map>

using namespace Qor::Tivor;
namespace Core = Qor::Core;

namespace {

enum class EObjective : int { eTIMES_10 = 10, eTIMES_50 = 50 };

std::shared_ptr<EnumValidator> Objectives() {
    ScalarData::RegisterType(typeid(EObjective), "Example::EObjective");
    auto objectives = std::make_shared<EnumValidator>(EnumValidator::For<EObjective>());
    objectives->AddValue(10, "10x");
    objectives->AddValue(50, "50x");
    return objectives;
}

std::shared_ptr<UnitValidator> Lengths() {
    return std::make_shared<UnitValidator>(Core::UnitDictionary::Instance().Get("Meter")->Clone());
}

void RequirePositive(PropertyContainer::OfferedValue& offered) {
    const auto exposure = std::dynamic_pointer_cast<Data<double>>(offered.second);
    if (!exposure || exposure->GetValue() <= 0)
        throw Core::Error("Expected an exposure above 0 ms, found " + offered.second->ToString());
}

class Instrument final : public PropertyContainer {
public:
    Instrument() : PropertyContainer(false) {
        const auto value = [](const auto& number) { return MakePropertyValue(number); };
        const auto positive = Core::MakeCallback(&RequirePositive);
        const auto objectives = Objectives();
        const Description table[] = {
            {.name = "Objective", .value = value(EObjective::eTIMES_10), .category = "Optics", .validator = objectives},
            {.name = "Exposure",
             .value = value(4.0),
             .displayName = "Exposure (ms)",
             .category = "Camera",
             .defaultValue = value(2.5),
             .validator = positive},
            {.name = "Range",
             .value = value(UnitizedDouble(0.1, "Millimeter")),
             .displayName = "Scan range",
             .category = "Stage",
             .validator = Lengths()},
            {.name = "Serial",
             .value = value("C-17"),
             .permissions = eREADABLE,
             .displayName = "Serial number",
             .category = "Camera",
             .description = "As on the label"},
        };
        AddProperties(table);
    }
};

class Log final : public PropertyChangeListener {
public:
    ~Log() override { Unregister(); }
    void PropertyChanged(const PropertyChangeEvent& event) override {
        const std::string& name = event.GetPropertyName();
        std::cout << "  " << name << ": now " << event.GetChangedObject().GetPropertyText(name) << ", was "
                  << event.GetOldValue()->ToString() << '\n';
    }
};

std::string AttributeOf(const Instrument& instrument, const std::string& name, const std::string& key) {
    const auto attribute = instrument.GetAttributeByPropertyName(name, key);
    return attribute ? attribute->ToString() : std::string();
}

void ShowPage(const Instrument& instrument) {
    std::map<std::string, std::string> page;
    std::vector<std::string> names;
    instrument.EnumProperties(names);
    for (const std::string& name : names) {
        const std::string shown = AttributeOf(instrument, name, sPROPERTY_DISPLAY_NAME);
        page[GetPropertyCategory(AttributeOf(instrument, name, sPROPERTY_CATEGORY))] +=
            "  " + (shown.empty() ? name : shown) + " = " + instrument.GetPropertyText(name) +
            (instrument.IsWritable(name) ? "" : " (fixed)") + (instrument.IsDefault(name) ? "" : " *") + '\n';
    }
    for (const auto& [category, lines] : page)
        std::cout << category << '\n' << lines;
}

void Try(const char* what, const std::function<void()>& set) {
    try {
        set();
    } catch (const Core::Error& error) {
        std::cout << what << " refused: " << error.GetText() << '\n';
    }
}

template <class File>
void SaveAndLoad(const Instrument& instrument, const char* path) {
    const auto saved = DataContainer::Create();
    instrument.CloneProperties(*saved, true);
    File file(path, DataFile::eREAD_WRITE, DataFile::eCREATE_ALWAYS, saved);
    file.Flush();
    file.Open(path, DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, nullptr);
    Instrument loaded;
    loaded.InputProperties(file);
    std::cout << file.GetFileType() << ": " << (loaded.HoldsSameProperties(instrument) ? "the same" : "changed")
              << '\n';
}

} // namespace

int main() {
    Instrument instrument;
    Log log;
    instrument.AddPropertyChangeListener(log);
    const PropertyContainer::RestorePoint before(instrument);

    std::cout << "one by one:\n";
    instrument.SetValue("Objective", "50x"); // as a page shows it
    instrument.SetValue("Range", UnitizedDouble(250, "Micrometer"));
    Try("exposure", [&] { instrument.SetValue("Exposure", -1.0); });
    Try("range", [&] { instrument.SetValue("Range", UnitizedDouble(3, "Second")); });

    std::cout << "together:\n";
    DataContainer changes;
    changes.PutValue("Exposure", 8.0);
    changes.PutValue("Serial", "D-1"); // fixed, so left out
    changes.Put("Objective", Instrument::MakePropertyValue(EObjective::eTIMES_10));
    instrument.SetProperties(changes);
    ShowPage(instrument);
    SaveAndLoad<BinaryDataFile>(instrument, "settings.qordata");
    SaveAndLoad<XMLDataFile>(instrument, "settings.qordml");

    std::cout << "restored:\n";
    PropertyContainer::RestorePoint(before).RestoreProperties();
    std::cout << "changed since: " << (before.PropertiesChanged() ? "yes" : "no") << '\n';
}
