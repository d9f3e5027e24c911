#include "SameEntries.h"

#include "Display.h"

#include <QorCore/MemoryStreams.h>

namespace Qor::Tivor::Tool {

namespace {

/// Takes bytes to find out whether they are those that it was given.
class ComparingStream final : public Core::BinaryOutputStream {
public:
    explicit ComparingStream(std::span<const std::byte> expected) : m_rest(expected) {}

    bool TookThem() const { return m_isSame && m_rest.empty(); }

protected:
    void DoWrite(const void* source, std::uint64_t size) override {
        m_isSame = m_isSame && size <= m_rest.size() &&
                   std::memcmp(m_rest.data(), source, static_cast<std::size_t>(size)) == 0;
        if (m_isSame)
            m_rest = m_rest.subspan(static_cast<std::size_t>(size));
    }

private:
    std::span<const std::byte> m_rest;
    bool m_isSame = true;
};

bool AreSame(const DataContainer& expected, const DataContainer& found, Path& path) {
    auto other = found.begin();
    for (const auto& [key, object] : expected) {
        path.push_back(key);
        if (other == found.end() || other->key != key)
            return false;
        const auto below = expected.GetPtr<DataContainer>(key);
        const auto otherBelow = found.GetPtr<DataContainer>(key);
        if (below && otherBelow ? !AreSame(*below, *otherBelow, path) : !AreStoredAlike(*object, *other->object))
            return false;
        path.pop_back();
        ++other;
    }
    if (other == found.end())
        return true;
    path.push_back(other->key);
    return false;
}

} // namespace

bool AreStoredAlike(DataObject& expected, DataObject& found) {
    Core::MemoryOutputStream bytes(SerializationManager::GetDataBlockSize_bytes({}, expected));
    SerializationManager::OutputDataBlock(bytes, {}, expected);
    ComparingStream comparing(bytes.GetBytes());
    SerializationManager::OutputDataBlock(comparing, {}, found);
    return comparing.TookThem();
}

std::string FindDifference(const DataContainer& expected, const DataContainer& found) {
    Path path;
    return AreSame(expected, found, path) ? std::string() : ShowPath(path);
}

} // namespace Qor::Tivor::Tool
