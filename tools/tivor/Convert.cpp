#include "Commands.h"
#include "Comparison.h"
#include "Conversion.h"
#include "Files.h"
#include "Selection.h"

#include <QorCore/Message.h>
#include <QorCore/PathName.h>
#include <QorCore/System.h>
#include <Tivor/DataFileTypeManager.h>

#include <set>

namespace Qor::Tivor::Tool {

namespace {

struct TargetType {
    std::string name;
    std::string extension;
};

TargetType FindTargetType(const std::string& nameOrExtension) {
    DataFileTypeManager& manager = DataFileTypeManager::Instance();
    for (const auto& factory : manager.GetFactories())
        if (std::vector<std::string> extensions; factory->GetFileType() == nameOrExtension) {
            factory->EnumExtensions(extensions);
            return {nameOrExtension, extensions.empty() ? std::string() : extensions.front()};
        }
    const std::string extension = nameOrExtension.substr(nameOrExtension.starts_with('.') ? 1 : 0);
    const std::string fileName = "any." + extension;
    const auto factory = manager.FindFactoryByExtension(fileName);
    if (!factory || Core::PathName(fileName).GetExtension() != extension)
        Fail(Core::FormatText("Expected a file type or its extension behind --to, found %1%; the types: %2%",
                              {Show(nameOrExtension), ListFileTypes()}));
    return {factory->GetFileType(), extension};
}

std::string FindTypeByExtension(const std::string& fileName) {
    const auto factory = DataFileTypeManager::Instance().FindFactoryByExtension(fileName);
    if (!factory)
        Fail(Core::FormatText("%1%: expected the extension of a file type, or --to with one, found neither; the "
                              "types: %2%",
                              {Show(fileName), ListFileTypes()}));
    return factory->GetFileType();
}

void TellStage(const char* stage, const Conversion& conversion, Console& console) {
    if (conversion.bytesBefore >= Progress::fewestBytes)
        console.progress.Tell(Core::FormatText("%1%: %2%", {Show(conversion.source), stage}));
}

Ledger LedgerOf(const std::vector<UnreadEntry>& dropped) {
    Ledger ledger;
    for (const UnreadEntry& entry : dropped)
        ledger.push_back(
            {LedgerEntry::eDROPPED, ShowPath(entry.path), "of class " + Show(entry.typeName) + ": " + entry.reason});
    return ledger;
}

void RequireEmpty(const Ledger& ledger, const std::string& fileName) {
    if (ledger.empty())
        return;
    ToolError error(Core::FormatText("%1%: expected to keep all that the source holds, found %2%; nothing is saved",
                                     {Show(fileName), Describe(SumUp(ledger))}));
    for (const LedgerEntry& entry : ledger)
        error.AddVariable(LedgerEntry::names[entry.kind], entry.place + ": " + entry.text);
    Core::Error::RaiseError(std::move(error), QOR_CODE_CONTEXT("Tool"), category);
}

/// Saves the entries, which may get another element type first, and completes the ledger.
std::uint64_t Save(const DataContainer& entries, Conversion& conversion, const Arguments& arguments, Console& console) {
    const auto retyped = arguments.elementType.empty() ? nullptr : WithElementType(entries, arguments.elementType);
    const auto accept = [&](const DataContainer& written, bool isSame) {
        conversion.ledger.insert(conversion.ledger.end(), console.losses.begin(), console.losses.end());
        TellStage("comparing", conversion, console);
        if (retyped || !isSame)
            TellChanges(entries, written, conversion.ledger);
        if (arguments.isStrict)
            RequireEmpty(conversion.ledger, conversion.target);
        conversion.deviates = !conversion.ledger.empty();
    };
    console.losses.clear();
    TellStage("writing", conversion, console);
    return SaveAs(retyped ? *retyped : entries, conversion.target, conversion.targetType, console, accept);
}

void ConvertFile(Conversion& conversion, const Arguments& arguments, Console& console) {
    console.hidesWarnings = false;
    RequireTarget(conversion.source, conversion.target, arguments.overwrites);
    conversion.bytesBefore = GetFileSize(conversion.source);
    TellStage("reading", conversion, console);
    const auto file = OpenFile(conversion.source, DataFile::eREAD_ONLY);
    RequireNothingUnread(*file, conversion.source, arguments.dropsUnread);
    conversion.sourceType = file->GetFileType();
    conversion.dropped = file->GetUnreadEntries();
    conversion.ledger = LedgerOf(conversion.dropped);
    const auto chosen = arguments.channels.empty() ? nullptr : KeepChannels(*file, arguments.channels);
    const DataContainer& entries = chosen ? *chosen : *file;
    DataContainer::ForEachHeader(entries,
                                 [&](const Path&, const DataObjectHeader&) { return ++conversion.numEntries; });
    conversion.bytesAfter = Save(entries, conversion, arguments, console);
}

/// The same name below another folder, with another extension.
std::string MoveName(const Core::PathName& below, const std::string& folder, const std::string& newExtension) {
    const std::string extension = below.GetExtension();
    std::string name = below.ToString();
    if (!extension.empty())
        name.resize(name.size() - extension.size() - 1);
    return (Core::PathName(folder) / (name + '.' + newExtension)).ToString();
}

/// Whether a file type accepts the file.
bool IsDataFile(Conversion& conversion) {
    const DataFileTypeManager& manager = DataFileTypeManager::Instance();
    try {
        manager.FindFactoryFor(conversion.source);
        return true;
    } catch (const UnknownDataFileType&) {
        conversion.fate = Conversion::ePASSED_OVER;
        conversion.deviates = manager.FindFactoryByExtension(conversion.source) != nullptr;
        conversion.reason =
            conversion.deviates ? "no file type accepts it, though one has its extension" : "no file type accepts it";
        return false;
    }
}

void ConvertFileOfFolder(Conversion& conversion, std::set<std::string>& targets, const Arguments& arguments,
                         Console& console) {
    try {
        if (!IsDataFile(conversion))
            return;
        if (!targets.insert(conversion.target).second)
            Fail(Core::FormatText("%1%: expected another name for each file, found it for %2% too",
                                  {Show(conversion.target), Show(conversion.source)}));
        Core::System::MakeDirectories(Core::PathName(conversion.target).GetDirectory());
        ConvertFile(conversion, arguments, console);
    } catch (const std::exception& error) {
        console.progress.Wipe();
        Explain(error, console.err);
        conversion.fate = Conversion::eFAILED;
        conversion.reason = error.what();
    }
}

std::vector<Conversion> ConvertFolder(const Arguments& arguments, Console& console) {
    const std::string& source = arguments.file;
    const std::string& target = arguments.target;
    if (arguments.type.empty())
        Fail("Expected --to TYPE for the files of a folder, found none; the types: " + ListFileTypes());
    const TargetType type = FindTargetType(arguments.type);
    if (type.extension.empty())
        Fail("Expected a file type whose files have an extension, found " + Show(type.name));
    if (StandsIn(target, source))
        Fail(Core::FormatText("%1%: expected a folder outside of %2%, found one in it", {Show(target), Show(source)}));
    std::vector<Core::PathName> names;
    Core::System::EnumFilesBelow(Core::PathName(source), names);
    std::vector<Conversion> conversions;
    std::set<std::string> targets;
    for (const Core::PathName& name : names) {
        Conversion& conversion = conversions.emplace_back();
        conversion.source = (Core::PathName(source) / name).ToString();
        conversion.target = MoveName(name, target, type.extension);
        conversion.targetType = type.name;
        console.warnsOf = conversion.source;
        console.progress.Tell(
            Core::FormatText("%1% of %2%: %3%", {conversions.size(), names.size(), Show(conversion.source)}));
        ConvertFileOfFolder(conversion, targets, arguments, console);
    }
    return conversions;
}

std::vector<Conversion> ConvertOne(const Arguments& arguments, Console& console) {
    RequireFile(arguments.file);
    Conversion conversion;
    conversion.source = arguments.file;
    conversion.target = arguments.target;
    conversion.targetType =
        arguments.type.empty() ? FindTypeByExtension(arguments.target) : FindTargetType(arguments.type).name;
    ConvertFile(conversion, arguments, console);
    return {conversion};
}

} // namespace

EStatus Convert(const Arguments& arguments, Console& console) {
    console.tellsLosses = true;
    const bool isFolder = IsFolder(arguments.file);
    const std::vector<Conversion> conversions =
        isFolder ? ConvertFolder(arguments, console) : ConvertOne(arguments, console);
    console.progress.Wipe();
    TellDropped(conversions, console.err);
    if (arguments.asJson)
        Print(console.out, ToJson(conversions));
    else
        PrintText(console.out, conversions, isFolder);
    return StatusOf(conversions);
}

} // namespace Qor::Tivor::Tool
