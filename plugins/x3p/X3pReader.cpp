#include "../common/Text.h"
#include "Checksum.h"
#include "Fields.h"
#include "PointData.h"
#include "Points.h"
#include "X3p.h"

#include <algorithm>

namespace Qor::Tivor::Measurements {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// Whether an entry was left by an operating system, and is nobody's data.
bool IsLitter(const std::string& name) {
    const std::string last = name.substr(name.rfind('/') + 1);
    return name.starts_with("__MACOSX/") || last.starts_with("._") || last == ".DS_Store" || last == "Thumbs.db" ||
           last == "desktop.ini";
}

class Reader {
public:
    Reader(std::string bytes, const Report& report) : m_archive(std::move(bytes), report), m_report(report) {}

    void ReadInto(DataContainer& content) {
        const ArchiveReader::Entry& main = FindMain();
        const std::string xml = m_archive.ReadText(main);
        if (xml.starts_with(byteOrderMark))
            m_report.Deviates(std::string(mainName) + ", byte 0", "no byte order mark", "that of UTF-8");
        const MainDocument document(xml, m_report);
        CheckRoot(document.root);
        CheckMainChecksum(document.root, xml);
        const Description description(document.root, m_report);
        const Points points = ReadPoints(document, description, m_archive, m_folder, m_report);
        StoreFields(document.root);
        StoreUnknown(document.root, {});
        StoreFiles(document.root);
        if (description.link == nullptr)
            StoreText({x3pKey, storageKey}, textStorage);
        if (points.isWidened)
            StoreText({x3pKey, dataTypeKey}, std::string(1, static_cast<char>(description.axes[2].type)));
        StorePoints(description, points, m_reading, m_report);
        m_reading.StoreIn(content);
    }

private:
    const ArchiveReader::Entry& FindMain() {
        if (const auto* const entry = m_archive.Find(mainName))
            return *entry;
        for (const auto& entry : m_archive.GetEntries())
            if (entry.name.ends_with(std::string("/") + mainName) && !IsLitter(entry.name)) {
                m_folder = entry.name.substr(0, entry.name.size() - std::string_view(mainName).size());
                m_report.Deviates(entry.name, "main.xml at the top of the container",
                                  "it below the folder " + Quote(m_folder));
                return entry;
            }
        m_report.Fail("container", "an entry main.xml", "none");
    }

    void CheckRoot(const Element& root) {
        const std::size_t colon = root.name.find(':');
        const std::string attribute =
            colon == std::string::npos ? std::string("xmlns") : "xmlns:" + root.name.substr(0, colon);
        const auto isNamespace = [&](const auto& pair) {
            return pair.first == attribute && pair.second == rootNamespace;
        };
        if (root.GetLocalName() != rootName ||
            std::none_of(root.attributes.begin(), root.attributes.end(), isNamespace))
            m_report.Deviates(root.GetPlace(), Core::FormatText("a root element %1% of %2%", {rootName, rootNamespace}),
                              Quote(root.name) + (root.GetLocalName() == rootName ? " of another" : ""));
    }

    void CheckMainChecksum(const Element& root, const std::string& xml) {
        const Element* const link = root.FindBelow("Record4/ChecksumFile");
        if (link == nullptr)
            m_report.Deviates(root.GetPlace(), "an element Record4/ChecksumFile", "none");
        m_checksumName = link == nullptr || link->text.empty() ? checksumName : link->text;
        const auto* const entry = m_archive.Find(m_folder + m_checksumName);
        if (entry == nullptr)
            return m_report.Deviates("container", "an entry " + m_checksumName, "none");
        std::string line = m_archive.ReadText(*entry);
        line = std::string(Core::TrimBlanks(line));
        std::string sum = line.substr(0, line.find_first_of(" \t"));
        std::transform(sum.begin(), sum.end(), sum.begin(),
                       [](char c) { return c >= 'A' && c <= 'F' ? static_cast<char>(c + ('a' - 'A')) : c; });
        const std::string expected = ChecksumOf(xml.data(), xml.size());
        if (sum != expected)
            m_report.Deviates(entry->name, "the checksum of main.xml, " + expected, Quote(sum));
        else if (line.size() == sum.size())
            m_report.Deviates(entry->name, "the name main.xml behind the checksum", "none");
    }

    void StoreText(const ElementPath& path, const std::string& text) {
        m_reading.GetMetaData().GetSubData({path.begin(), path.end() - 1}, true)->PutValue(path.back(), text);
    }

    void StoreFields(const Element& root) {
        for (const Field& field : fields) {
            const ElementPath path = SplitPath(field.path);
            const Element* const element = root.FindBelow(field.path);
            if (element == nullptr) {
                if (const Element* const parent = FindParent(root, path); parent != nullptr && field.isRequired)
                    m_report.Deviates(parent->GetPlace(), "an element " + path.back(), "none");
                continue;
            }
            if (!IsValid(field.text, element->text))
                m_report.Deviates(element->GetPlace(), Describe(field.text), Quote(element->text));
            ElementPath key{x3pKey};
            key.insert(key.end(), path.begin(), path.end());
            StoreText(key, element->text);
        }
    }

    static const Element* FindParent(const Element& root, const ElementPath& path) {
        return path.size() == 1 ? &root : root.FindBelow(JoinPath({path.begin(), path.end() - 1}));
    }

    enum class EKnown { not_, above, itself };

    static EKnown Knows(const ElementPath& path) {
        const std::string name = JoinPath(path);
        const auto knows = [&](std::string_view known) {
            return known == name                                                 ? EKnown::itself
                   : known.size() > name.size() && known.starts_with(name + '/') ? EKnown::above
                                                                                 : EKnown::not_;
        };
        EKnown best = EKnown::not_;
        for (const Field& field : fields)
            best = std::max(best, knows(field.path));
        for (const char* const known : structure)
            best = std::max(best, knows(known));
        return best;
    }

    /// Elements that the standard does not know, and those that stand where it knows another one already.
    void StoreUnknown(const Element& element, const ElementPath& path) {
        for (const Element& child : element.children) {
            ElementPath below = path;
            below.push_back(child.GetLocalName());
            const EKnown known = Knows(below);
            if (known == EKnown::not_ || element.Find(child.GetLocalName()) != &child) {
                m_report.Deviates(child.GetPlace(), "an element of the standard, once",
                                  Quote(JoinPath(below)) + ", which is kept in the metadata");
                StoreText({x3pKey, unknownElementsKey,
                           JoinPath(below) + (known == EKnown::not_ ? "" : ", line " + std::to_string(child.line))},
                          child.ToXML());
            } else if (known == EKnown::above) {
                StoreUnknown(child, below);
            }
        }
    }

    void StoreFiles(const Element& root) {
        std::vector<std::string> used{m_folder + mainName, m_folder + m_checksumName};
        for (const char* const name : {"PointDataLink", "ValidPointsLink"})
            if (const Element* const link = root.FindBelow(std::string("Record3/DataLink/") + name)) {
                used.push_back(m_folder + link->text);
                std::replace(used.back().begin(), used.back().end(), '\\', '/');
            }
        for (const auto& entry : m_archive.GetEntries()) {
            if (IsLitter(entry.name))
                m_report.Deviates(entry.name, "entries of the measurement",
                                  "one that an operating system left, which is dropped");
            else if (!entry.IsFolder() && std::find(used.begin(), used.end(), entry.name) == used.end())
                StoreFile(entry);
        }
    }

    void StoreFile(const ArchiveReader::Entry& entry) {
        const std::string name =
            entry.name.starts_with(m_folder) ? entry.name.substr(m_folder.size()) : "../" + entry.name;
        const auto bytes = std::make_shared<Array<unsigned char>>(static_cast<std::size_t>(entry.size));
        m_archive.Read(entry, bytes->GetElements().data());
        m_reading.GetMetaData().GetSubData({x3pKey, filesKey}, true)->Put(name, bytes);
    }

    ArchiveReader m_archive;
    const Report& m_report;
    std::string m_folder;
    std::string m_checksumName;
    Reading m_reading;
};

} // namespace

std::string X3p::Refusal(Core::BinaryInputStream& stream, std::uint64_t size) {
    static constexpr std::uint64_t mostOfTheList = 256 * 1024; // of the entries, at the end of the container
    char begin[4] = {};
    if (stream.Read(begin, sizeof begin) != sizeof begin || std::string_view(begin, sizeof begin) != "PK\x03\x04")
        return "it is no zip container";
    if (size > mostOfTheList + sizeof begin)
        stream.Skip(size - mostOfTheList - sizeof begin);
    return ReadAll(stream).find(mainName) == std::string::npos ? "it is a zip container without an entry main.xml" : "";
}

void X3p::Read(Core::BinaryInputStream& stream, const Report& report, DataContainer& content) {
    Reader(ReadAll(stream), report).ReadInto(content);
}

} // namespace Qor::Tivor::Measurements
