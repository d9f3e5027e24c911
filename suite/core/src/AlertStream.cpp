#include <QorCore/Alert.h>
#include <QorCore/DataStreams.h>

namespace Qor::Core {

namespace {

void WriteItem(DataOutputStream& stream, const CodeContext& context) {
    stream.Write(context.signature);
    stream.Write(context.function);
    stream.Write(context.source);
    stream.Write(context.line);
}

void WriteItem(DataOutputStream& stream, const AlertInfo::Variable& variable) {
    stream.Write(variable.name);
    stream.Write(variable.value);
}

bool ReadItem(DataInputStream& stream, CodeContext& context) {
    return stream.Read(context.signature) && stream.Read(context.function) && stream.Read(context.source) &&
           stream.Read(context.line);
}

bool ReadItem(DataInputStream& stream, AlertInfo::Variable& variable) {
    return stream.Read(variable.name) && stream.Read(variable.value);
}

std::uint64_t SizeOf(const CodeContext& context) {
    return GetSerializedStringSize(context.signature) + GetSerializedStringSize(context.function) +
           GetSerializedStringSize(context.source) + sizeof context.line;
}

std::uint64_t SizeOf(const AlertInfo::Variable& variable) {
    return GetSerializedStringSize(variable.name) + GetSerializedStringSize(variable.value);
}

template <class T>
void WriteItems(DataOutputStream& stream, const std::vector<T>& items) {
    stream.Write(std::uint64_t{items.size()});
    for (const T& item : items)
        WriteItem(stream, item);
}

// The count is not trusted: memory is taken as items arrive.
template <class T>
bool ReadItems(DataInputStream& stream, std::vector<T>& items) {
    std::uint64_t count = 0;
    if (!stream.Read(count))
        return false;
    for (; count > 0; --count)
        if (!ReadItem(stream, items.emplace_back()))
            return false;
    return true;
}

template <class T>
std::uint64_t SizeOf(const std::vector<T>& items) {
    std::uint64_t size = sizeof(std::uint64_t);
    for (const T& item : items)
        size += SizeOf(item);
    return size;
}

} // namespace

void AlertInfo::Write(DataOutputStream& stream) const {
    stream.Write(m_typeName);
    stream.Write(m_text);
    stream.Write(m_category);
    stream.Write(m_severity);
    WriteItem(stream, m_context);
    WriteItems(stream, m_callStack);
    WriteItems(stream, m_unwindStack);
    WriteItems(stream, m_variables);
}

bool AlertInfo::Read(DataInputStream& stream) {
    AlertInfo read({}, {});
    if (!stream.Read(read.m_typeName) || !stream.Read(read.m_text) || !stream.Read(read.m_category) ||
        !stream.Read(read.m_severity) || !ReadItem(stream, read.m_context) || !ReadItems(stream, read.m_callStack) ||
        !ReadItems(stream, read.m_unwindStack) || !ReadItems(stream, read.m_variables))
        return false;
    *this = std::move(read);
    return true;
}

std::uint64_t AlertInfo::GetSerializedSize() const {
    return GetSerializedStringSize(m_typeName) + GetSerializedStringSize(m_text) + GetSerializedStringSize(m_category) +
           sizeof m_severity + SizeOf(m_context) + SizeOf(m_callStack) + SizeOf(m_unwindStack) + SizeOf(m_variables);
}

} // namespace Qor::Core
