#include "Commands.h"
#include "Files.h"
#include "Properties.h"
#include "ScalarText.h"
#include "Values.h"

#include <QorCore/Message.h>
#include <QorCore/PathName.h>
#include <Tivor/DataSet.h>

#include <unordered_set>

namespace Qor::Tivor::Tool {

namespace {

/// Where the changed object stands: one of both.
struct Parent {
    DataContainer* container = nullptr;
    std::shared_ptr<PropertyContainer> properties;
    std::shared_ptr<void> owner;
};

struct Change {
    Path keys;
    std::string text;
    std::string type; ///< as the caller has it
    std::shared_ptr<DataObject> object;
    Json before;
    std::string textBefore;
    std::string textAfter;
    Json after;
};

Change ReadChange(const Arguments& arguments) {
    if (arguments.words.size() < 2)
        Fail("Expected one key or more and then a value, found nothing behind " + Show(arguments.words.front()));
    return {{arguments.words.begin(), arguments.words.end() - 1},
            arguments.words.back(),
            arguments.type,
            nullptr,
            {},
            {},
            {},
            {}};
}

std::shared_ptr<DataObject> MakeNew(const Change& change) {
    return MakeFromText(change.type.empty() ? "AsciiString" : change.type, change.text);
}

std::shared_ptr<DataFile> OpenOrCreate(const Arguments& arguments, const Change& change) {
    if (Core::PathName(arguments.file).Exists())
        return OpenFile(arguments.file, DataFile::eREAD_WRITE);
    if (!arguments.creates)
        Fail(Core::FormatText("%1%: expected a data file, found no file of that name; --create makes one",
                              {Show(arguments.file)}));
    MakeNew(change); // what cannot be made leaves no file behind
    const auto file = DataFile::Open(arguments.file, DataFile::eREAD_WRITE, DataFile::eCREATE_NEW,
                                     ChooseFileType(arguments.file), nullptr);
    if (!file)
        Fail(Core::FormatText("%1%: expected a place where a file can be made, found none", {Show(arguments.file)}));
    return file;
}

Parent FindParent(DataFile& file, const Path& keys) {
    if (keys.size() == 1)
        return {&file, nullptr, nullptr};
    const Path above(keys.begin(), keys.end() - 1);
    if (auto container = file.GetSubData(above, true))
        return {container.get(), nullptr, container};
    const auto object = FindObject(file, above); // or it tells what stands in the way
    if (auto properties = PropertiesOf(*object))
        return {nullptr, properties, object};
    Fail(Core::FormatText("%1%: expected a container or a measured array, found a %2%",
                          {ShowPath(above), Show(object->GetTypeName())}));
}

/// Changes the kind of an array in a data set, whose channels follow.
template <class Change>
void ChangeKind(DataFile& file, const Path& keys, Change change) {
    DataSet set(file);
    std::unordered_set<std::string> names;
    set.GetData2DChannels(names); // which are known from then on
    set.GetData1DChannels(names);
    change();
    DataContainer& items = keys[0] == DataSet::s2D_DATA ? set.AllData2D() : set.AllData1D();
    items.Put(keys[1], items.Get(keys[1])); // tells that it is another one
}

bool IsKindInDataSet(const DataFile& file, const Path& keys) {
    return keys.size() == 3 && (keys[0] == DataSet::s2D_DATA || keys[0] == DataSet::s1D_DATA) &&
           keys[2] == "DataKind" && DataSet::IsDataSetFormat(file);
}

void RequireClass(const Change& change, const DataObject& object) {
    if (!change.type.empty() && change.type != object.GetTypeName())
        Fail(Core::FormatText("%1%: expected an entry of class %2%, found a %3%, which it stays",
                              {ShowPath(change.keys), Show(change.type), Show(object.GetTypeName())}));
}

void ApplyTo(PropertyContainer& properties, Change& change) {
    const std::string& name = change.keys.back();
    const auto nameOfValue = [&] { return FindNameOfValue(properties, name); };
    const auto content = [&] { return std::const_pointer_cast<DataObject>(properties.GetPropertyByName(name)); };
    if (!properties.PropertyExists(name)) {
        if (!properties.SetProperty(name, MakeNew(change)))
            Fail(ShowPath(change.keys) + ": expected one of the properties, found none of that name");
    } else {
        if (const auto before = content()) {
            RequireClass(change, *before);
            change.textBefore = nameOfValue().value_or(BriefText(*before));
            change.before = nameOfValue() ? TextJson(*nameOfValue()) : ToJson(*before);
        }
        SetPropertyFromText(properties, name, change.text, ShowPath(change.keys));
    }
    change.object = content();
    change.textAfter = nameOfValue().value_or(BriefText(*change.object));
    change.after = nameOfValue() ? TextJson(*nameOfValue()) : ToJson(*change.object);
}

void ApplyTo(DataContainer& parent, Change& change) {
    const std::string& key = change.keys.back();
    change.object = parent.Get(key);
    if (change.object) {
        RequireClass(change, *change.object);
        if (parent.GetPtr<DataContainer>(key))
            Fail(Core::FormatText("%1%: expected a number or a text, found a container", {ShowPath(change.keys)}));
        change.textBefore = BriefText(*change.object);
        change.before = ToJson(*change.object);
        SetFromText(*change.object, change.text);
    } else {
        change.object = MakeNew(change);
        parent.Put(key, change.object);
    }
    change.textAfter = BriefText(*change.object);
    change.after = ToJson(*change.object);
}

void Apply(DataFile& file, Change& change) {
    const Parent parent = FindParent(file, change.keys);
    const auto apply = [&] { ApplyTo(*parent.properties, change); };
    if (parent.properties && IsKindInDataSet(file, change.keys)) {
        ChangeKind(file, change.keys, apply);
    } else if (parent.properties) {
        apply();
    } else {
        ApplyTo(*parent.container, change);
    }
}

void PrintChange(const Change& change, bool asJson, std::ostream& out) {
    const std::string className = change.object->GetTypeName();
    if (asJson)
        return Print(out, {{"path", PathJson(change.keys)},
                           {"class", TextJson(className)},
                           {"before", change.before},
                           {"after", change.after}});
    out << ShowPath(change.keys) << ", " << Show(className) << ": "
        << (change.before.is_null() ? "new" : change.textBefore) << " -> " << change.textAfter << '\n';
}

} // namespace

EStatus Set(const Arguments& arguments, Console& console) {
    Change change = ReadChange(arguments);
    const auto file = OpenOrCreate(arguments, change);
    RequireNothingUnread(*file, arguments.file, arguments.dropsUnread);
    Apply(*file, change);
    file->Flush();
    PrintChange(change, arguments.asJson, console.out);
    return eFINE;
}

} // namespace Qor::Tivor::Tool
