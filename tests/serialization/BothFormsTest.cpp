#include "Alerts.h"
#include "StoredBytes.h"

#include <QorCore/MemoryStreams.h>
#include <Tivor/BinaryDataFile.h>
#include <Tivor/UnboundDataObject.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>

// Whatever stands in a container: binary, XML and memory agree.

namespace Qor::Tivor::Testing {

namespace {

using namespace Core::Testing;

/// Data that nobody knows, as both forms can keep it.
std::vector<std::shared_ptr<DataObject>> UnboundObjects() {
    std::vector<std::shared_ptr<DataObject>> objects;
    const auto add = [&](const std::shared_ptr<UnboundData>& object, const std::string& bytes) {
        Core::MemoryInputStream stream(bytes.data(), bytes.size());
        object->SetVersion(std::string("1\0\xFF", bytes.size() % 4));
        object->GetSerializer()->DataFromBinary(bytes.size(), stream);
        objects.push_back(object);
    };
    const std::string all = [] {
        std::string bytes;
        for (int c = 0; c < 5000; ++c)
            bytes += static_cast<char>(c);
        return bytes;
    }();
    for (const std::size_t size : {0u, 1u, 8u, 9u, 4096u, 4097u}) {
        add(std::make_shared<UnboundData>("Foreign::Class<int>", "far \"away\"", size == 1, false),
            all.substr(0, size));
        add(std::make_shared<UnboundData>("\x01", "?[]", false, true), all.substr(0, size));
        add(std::make_shared<UnboundScalarArray>("Array_quad", "*", size == 8), all.substr(0, size));
        add(std::make_shared<UnboundScalarContainer>("StdVector_quad", "*", size == 9), all.substr(0, size));
    }
    const char* const contents[] = {
        "", " \n ", "a &amp; b &gt;&#13;", "<a></a>",
        "\n  <a k=\"1 &#10;&quot;\" b=\"\">x<!-- c --><b><![CDATA[]]]]><![CDATA[>]]></b></a>\n",
        // no records, so data like any
        "<a/>", "<a k='1'></a>", "<a>", "&#65;", "\r\n", "<?x?>", "\xFF", "</Data><Data>"};
    for (const char* const content : contents)
        add(std::make_shared<UnboundData>("Kept", "", false, false), UnboundData::sCUSTOM_XML_PREFIX + content);
    return objects;
}

/// Objects of every class that the library stores, and of classes that it does not know.
const std::vector<std::shared_ptr<DataObject>>& Pool() {
    static const auto* const pool = [] {
        auto* const objects = new std::vector(UnboundObjects());
        std::vector<std::filesystem::path> paths;
        for (const auto& entry : std::filesystem::directory_iterator(TIVOR_TEST_DATA "/golden"))
            if (entry.path().extension() == ".qordata")
                paths.push_back(entry.path());
        std::sort(paths.begin(), paths.end());
        for (const auto& path : paths) {
            const BinaryDataFile file(path.string(), DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, nullptr);
            for (const auto& entry : file)
                objects->push_back(entry.object);
        }
        for (const std::size_t size : {8u, 9u, 4096u, 4097u, 100'000u}) {
            objects->push_back(MakeData(std::string(size, 'x')));
            objects->push_back(MakeData(std::string(size, '\0')));
        }
        for (const char* const text : {" ", "\r", "\r\n", "\n x \t", "]]>", "<a>&amp;</a>", "&#0;", "\xEF\xBF\xBF"})
            objects->push_back(MakeData(std::string(text)));
        return objects;
    }();
    return *pool;
}

class TreeMaker {
public:
    explicit TreeMaker(unsigned seed) : m_random(seed) {}

    std::shared_ptr<DataContainer> Make(unsigned depth = 0) {
        auto tree = DataContainer::Create();
        for (auto count = m_random() % (depth == 0 ? 12 : 5); count != 0; --count) {
            if (depth < 5 && m_random() % 6 == 0)
                tree->Put(MakeKey(), Make(depth + 1));
            else
                tree->Put(MakeKey(), Pool()[m_random() % Pool().size()]->Clone());
        }
        return tree;
    }

private:
    std::string MakeKey() {
        static const std::string pieces[] = {"Channel", "/", " ", "\t", "\n", "\r", "\"", "<&>", "\xC3\xA4", "]]>"};
        std::string key;
        for (auto length = m_random() % 6; length != 0; --length)
            if (m_random() % 8 == 0)
                key += static_cast<char>(m_random());
            else
                key += pieces[m_random() % std::size(pieces)];
        return key;
    }

    std::mt19937 m_random;
};

/// Binary, XML, and both again; empty when all agree.
std::string FindDifference(const DataContainer& tree) {
    const std::string bytes = Stored(tree);
    const std::string text = StoredXML(tree);
    const auto fromText = DataContainer::FromXMLString(text);
    if (Stored(*fromText) != bytes)
        return "what is read from XML is written as other bytes:\n" + text;
    if (StoredXML(*fromText) != text)
        return "what is read from XML is written as other XML:\n" + text;
    const auto fromBytes = DataContainer::Create();
    ReadInto(*fromBytes, bytes);
    if (StoredXML(*fromBytes) != text)
        return "what is read from binary is written as other XML:\n" + text;
    return {};
}

} // namespace

TEST(BothForms, AgreeOnRandomTrees) {
    const Warnings refusing(true);
    for (unsigned seed = 1; seed <= 20'000; ++seed)
        ASSERT_EQ(FindDifference(*TreeMaker(seed).Make()), "") << "seed " << seed;
}

} // namespace Qor::Tivor::Testing
