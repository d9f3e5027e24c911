#include "Commands.h"
#include "Files.h"
#include "ScalarText.h"
#include "Values.h"

#include <QorCore/Message.h>
#include <QorCore/PathName.h>

namespace Qor::Tivor::Tool {

namespace {

struct Change {
    Path keys;
    std::string text;
    std::string type; ///< as the caller has it
    std::shared_ptr<DataObject> object;
    Json before;
    std::string textBefore;
};

Change ReadChange(const Arguments& arguments) {
    if (arguments.words.size() < 2)
        Fail("Expected one key or more and then a value, found nothing behind " + Show(arguments.words.front()));
    return {
        {arguments.words.begin(), arguments.words.end() - 1}, arguments.words.back(), arguments.type, nullptr, {}, {}};
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

DataContainer& FindParent(DataFile& file, const Path& keys, std::shared_ptr<DataContainer>& owner) {
    if (keys.size() == 1)
        return file;
    const Path above(keys.begin(), keys.end() - 1);
    owner = file.GetSubData(above, true);
    if (!owner) {
        FindObject(file, keys); // tells what stands in the way
        Fail(Core::FormatText("%1%: expected a container, found a measured array, whose properties are not set so",
                              {ShowPath(above)}));
    }
    return *owner;
}

void Apply(DataFile& file, Change& change) {
    std::shared_ptr<DataContainer> owner;
    DataContainer& parent = FindParent(file, change.keys, owner);
    const std::string& key = change.keys.back();
    change.object = parent.Get(key);
    if (!change.object) {
        change.object = MakeNew(change);
        parent.Put(key, change.object);
        return;
    }
    if (!change.type.empty() && change.type != change.object->GetTypeName())
        Fail(Core::FormatText("%1%: expected an entry of class %2%, found a %3%, which it stays",
                              {ShowPath(change.keys), Show(change.type), Show(change.object->GetTypeName())}));
    if (parent.GetPtr<DataContainer>(key))
        Fail(Core::FormatText("%1%: expected a number or a text, found a container", {ShowPath(change.keys)}));
    change.textBefore = BriefText(*change.object);
    change.before = ToJson(*change.object);
    SetFromText(*change.object, change.text);
}

void PrintChange(const Change& change, bool asJson, std::ostream& out) {
    const std::string className = change.object->GetTypeName();
    if (asJson)
        return Print(out, {{"path", PathJson(change.keys)},
                           {"class", TextJson(className)},
                           {"before", change.before},
                           {"after", ToJson(*change.object)}});
    out << ShowPath(change.keys) << ", " << Show(className) << ": "
        << (change.before.is_null() ? "new" : change.textBefore) << " -> " << BriefText(*change.object) << '\n';
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
