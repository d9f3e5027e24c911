#include <QorCore/UnitDescriptor.h>

#include <bit>
#include <utility>

namespace Qor::Core {

UnitDescriptor::UnitDescriptor(std::string name, std::string symbol, double scale, double offset,
                               const Exponents& exponents)
    : m_name(std::move(name)), m_symbol(std::move(symbol)), m_scale(scale), m_offset(offset), m_exponents(exponents) {}

std::shared_ptr<UnitDescriptor> UnitDescriptor::Create(std::string name, std::string symbol, double scale,
                                                       double offset, const Exponents& exponents) {
    return std::make_shared<UnitDescriptor>(std::move(name), std::move(symbol), scale, offset, exponents);
}

std::shared_ptr<UnitDescriptor> UnitDescriptor::Clone() const { return std::make_shared<UnitDescriptor>(*this); }

bool UnitDescriptor::operator==(const UnitDescriptor& other) const {
    const auto bits = [](double number) { return std::bit_cast<std::uint64_t>(number); };
    return bits(m_scale) == bits(other.m_scale) && bits(m_offset) == bits(other.m_offset) &&
           m_exponents == other.m_exponents && m_name == other.m_name && m_symbol == other.m_symbol;
}

void UnitDescriptor::Write(DataOutputStream& stream) const {
    stream.Write(m_name);
    stream.Write(m_symbol);
    stream.Write(m_scale);
    stream.Write(m_offset);
    stream.GetStream().Write(m_exponents.data(), m_exponents.size());
}

bool UnitDescriptor::Read(DataInputStream& stream) {
    UnitDescriptor read;
    if (!stream.Read(read.m_name) || !stream.Read(read.m_symbol) || !stream.Read(read.m_scale) ||
        !stream.Read(read.m_offset) ||
        stream.GetStream().Read(read.m_exponents.data(), read.m_exponents.size()) != read.m_exponents.size())
        return false;
    *this = std::move(read);
    return true;
}

std::uint64_t UnitDescriptor::GetSerializedSize() const {
    return GetSerializedStringSize(m_name) + GetSerializedStringSize(m_symbol) + sizeof m_scale + sizeof m_offset +
           m_exponents.size();
}

} // namespace Qor::Core
