#include <QorCore/Message.h>
#include <QorCore/UnitizedValue.h>

#include <charconv>
#include <cmath>
#include <compare>
#include <limits>

namespace Qor::Core {

IllegalUnitConversion::~IllegalUnitConversion() = default;

namespace {

using Units = QorConstPtr<UnitDescriptor>;

const Units& PlainUnits() {
    static const auto* const plain = new Units(UnitDictionary::Instance().Get(""));
    return *plain;
}

const Units& OrPlain(const Units& units) { return units ? units : PlainUnits(); }

[[noreturn]] void RaiseIllegalConversion(const UnitDescriptor& from, const UnitDescriptor& to) {
    Error::RaiseError(IllegalUnitConversion(FormatText("Illegal unit conversion from \"%1%\" to \"%2%\"",
                                                       {from.ToString(), to.ToString()})),
                      QOR_CODE_CONTEXT("UnitizedValue"), "Qor.Core.UnitizedValue");
}

bool IsUsableScale(double scale) { return std::isfinite(scale) && scale != 0; }

bool IsConvertible(const UnitDescriptor& unit) {
    return IsUsableScale(unit.GetScale()) && std::isfinite(unit.GetOffset());
}

/// The whole number (beyond 2^53: the power of ten) that a ratio of at least 1 is but for the rounding of the scales,
/// or 0.
double WholeRatio(long double ratio) {
    constexpr long double tolerance = 4 * std::numeric_limits<double>::epsilon();
    const long double size = std::abs(ratio);
    const bool isCounted = size < 0x1p53L;
    const long double whole = isCounted ? std::round(size) : std::pow(10.0L, std::round(std::log10(size)));
    if (!(std::abs(size - whole) <= tolerance * size))
        return 0;
    return static_cast<double>(std::copysign(whole, ratio));
}

/// The number times `from` over `to`. Where that is a whole number or one over it, as the scales are meant, the result
/// is the double nearest to the product or quotient.
double Rescale(double number, double from, double to) {
    const long double ratio = static_cast<long double>(from) / to;
    const bool grows = std::abs(from) >= std::abs(to);
    const double whole = WholeRatio(grows ? ratio : static_cast<long double>(to) / from);
    if (whole == 0)
        return static_cast<double>(number * ratio);
    return grows ? number * whole : number / whole;
}

double Convert(double number, const UnitDescriptor& from, double scaleTo, double offsetTo) {
    const double rescaled = Rescale(number, from.GetScale(), scaleTo);
    // Adding nothing is not the same: it takes the sign from -0.
    if (from.GetOffset() == offsetTo)
        return rescaled;
    return static_cast<double>(rescaled + (static_cast<long double>(from.GetOffset()) - offsetTo) / scaleTo);
}

std::int8_t Exponent(int exponent) {
    using Limits = std::numeric_limits<std::int8_t>;
    if (exponent < Limits::min() || exponent > Limits::max())
        Error::RaiseError(OutOfRangeError(FormatText("The unit of a result has the exponent %1%, outside of %2% to %3%",
                                                     {exponent, Limits::min(), Limits::max()})),
                          QOR_CODE_CONTEXT("UnitizedValue"), "Qor.Core.UnitizedValue");
    return static_cast<std::int8_t>(exponent);
}

/// NaN stands behind all numbers.
std::weak_ordering Order(double left, double right) {
    if (std::isnan(left) || std::isnan(right))
        return std::isnan(left) <=> std::isnan(right);
    return left < right   ? std::weak_ordering::less
           : left > right ? std::weak_ordering::greater
                          : std::weak_ordering::equivalent;
}

/// Two units in a product or quotient.
struct Pair {
    const UnitDescriptor& left;
    char operation; // '*' or '/'
    const UnitDescriptor& right;

    UnitDescriptor::Exponents Exponents() const {
        UnitDescriptor::Exponents result{};
        const int sign = operation == '*' ? 1 : -1;
        for (std::size_t i = 0; i < result.size(); ++i)
            result[i] = Exponent(left.GetExponents()[i] + sign * right.GetExponents()[i]);
        return result;
    }
    double Scaled(double number) const {
        return operation == '*' ? Rescale(number, left.GetScale() * right.GetScale(), 1)
                                : Rescale(number, left.GetScale(), right.GetScale());
    }
    std::string Text(const std::string& leftText, const std::string& rightText) const {
        const bool isSafe = operation == '*' || rightText.find_first_of("*/") == std::string::npos;
        return leftText + operation + (isSafe ? rightText : '(' + rightText + ')');
    }
};

template <class T>
UnitizedValue<T> Combined(T number, const Pair& units) {
    const double scale = units.Scaled(1);
    if (units.left.GetOffset() != 0 || units.right.GetOffset() != 0 || !IsUsableScale(scale))
        RaiseIllegalConversion(units.left, units.right);
    const UnitDescriptor::Exponents exponents = units.Exponents();
    if (exponents == UnitDescriptor::Exponents{})
        return UnitizedValue<T>(static_cast<T>(units.Scaled(number)));
    if (Units known = UnitDictionary::Instance().FindLike(exponents, scale))
        return {number, std::move(known)};
    return {number,
            UnitDescriptor::Create(units.Text(units.left.ToString(), units.right.ToString()),
                                   units.Text(units.left.GetSymbol(), units.right.GetSymbol()), scale, 0.0, exponents)};
}

} // namespace

template <class T>
UnitizedValue<T>::UnitizedValue(T value, Units units) : m_value(value), m_units(std::move(units)) {}

template <class T>
UnitizedValue<T>::UnitizedValue(T value, const std::string& unitName)
    : UnitizedValue(value, UnitDictionary::Instance().Get(unitName)) {}

template <class T>
UnitizedValue<T>::UnitizedValue(T value, const char* unitName) : UnitizedValue(value, std::string(unitName)) {}

template <class T>
Units UnitizedValue<T>::GetUnits() const {
    return OrPlain(m_units);
}

template <class T>
T UnitizedValue<T>::GetSIValue() const {
    return m_units ? static_cast<T>(Convert(m_value, *m_units, 1.0, 0.0)) : m_value;
}

template <class T>
UnitizedValue<T> UnitizedValue<T>::ConvertTo(Units units) const {
    const UnitDescriptor& from = *OrPlain(m_units);
    const UnitDescriptor& to = *OrPlain(units);
    if (from == to)
        return {m_value, std::move(units)};
    if (!from.IsDimensionallyEquivalent(to) || !IsConvertible(from) || !IsConvertible(to))
        RaiseIllegalConversion(from, to);
    return {static_cast<T>(Convert(m_value, from, to.GetScale(), to.GetOffset())), std::move(units)};
}

template <class T>
UnitizedValue<T> UnitizedValue<T>::ConvertTo(const std::string& unitName) const {
    return ConvertTo(UnitDictionary::Instance().Get(unitName));
}

template <class T>
UnitizedValue<T> UnitizedValue<T>::operator-() const {
    return {-m_value, m_units};
}

template <class T>
UnitizedValue<T> UnitizedValue<T>::operator+(const UnitizedValue& right) const {
    const UnitDescriptor& from = *OrPlain(right.m_units);
    const UnitDescriptor& to = *OrPlain(m_units);
    if (from.GetOffset() != to.GetOffset())
        RaiseIllegalConversion(from, to);
    return {m_value + right.ConvertTo(m_units).m_value, m_units};
}

template <class T>
UnitizedValue<T> UnitizedValue<T>::operator-(const UnitizedValue& right) const {
    return *this + -right;
}

template <class T>
UnitizedValue<T> UnitizedValue<T>::operator*(const UnitizedValue& right) const {
    const UnitDescriptor& leftUnits = *OrPlain(m_units);
    const UnitDescriptor& rightUnits = *OrPlain(right.m_units);
    if (rightUnits.IsEmpty())
        return {m_value * right.m_value, m_units};
    if (leftUnits.IsEmpty())
        return {m_value * right.m_value, right.m_units};
    if (leftUnits.IsDimensionless())
        return {GetSIValue() * (rightUnits.IsDimensionless() ? right.GetSIValue() : right.m_value),
                rightUnits.IsDimensionless() ? Units() : right.m_units};
    if (rightUnits.IsDimensionless())
        return {m_value * right.GetSIValue(), m_units};
    return Combined(m_value * right.m_value, {leftUnits, '*', rightUnits});
}

template <class T>
UnitizedValue<T> UnitizedValue<T>::operator/(const UnitizedValue& right) const {
    static const auto* const one = new UnitDescriptor("1", "1");
    const UnitDescriptor& leftUnits = *OrPlain(m_units);
    const UnitDescriptor& rightUnits = *OrPlain(right.m_units);
    if (rightUnits.IsEmpty())
        return {m_value / right.m_value, m_units};
    if (rightUnits.IsDimensionless())
        return leftUnits.IsDimensionless() ? UnitizedValue(GetSIValue() / right.GetSIValue())
                                           : UnitizedValue(m_value / right.GetSIValue(), m_units);
    if (leftUnits.IsDimensionless())
        return Combined(GetSIValue() / right.m_value, {*one, '/', rightUnits});
    return Combined(m_value / right.m_value, {leftUnits, '/', rightUnits});
}

template <class T>
bool UnitizedValue<T>::operator==(const UnitizedValue& other) const {
    return m_value == other.m_value && (m_units == other.m_units || *OrPlain(m_units) == *OrPlain(other.m_units));
}

template <class T>
bool UnitizedValue<T>::operator<(const UnitizedValue& other) const {
    const UnitDescriptor& leftUnits = *OrPlain(m_units);
    const UnitDescriptor& rightUnits = *OrPlain(other.m_units);
    if (!leftUnits.IsDimensionallyEquivalent(rightUnits))
        return leftUnits.GetExponents() < rightUnits.GetExponents();
    if (const auto order = Order(GetSIValue(), other.GetSIValue()); order != 0)
        return order < 0;
    if (const auto order = leftUnits.GetName() <=> rightUnits.GetName(); order != 0)
        return order < 0;
    return Order(m_value, other.m_value) < 0;
}

template <class T>
std::string UnitizedValue<T>::ToString() const {
    char digits[64];
    std::string text(digits, std::to_chars(digits, digits + sizeof digits, m_value).ptr);
    const UnitDescriptor& units = *OrPlain(m_units);
    const std::string& label = units.GetSymbol().empty() ? units.GetName() : units.GetSymbol();
    return label.empty() ? text : text + ' ' + label;
}

template <class T>
void UnitizedValue<T>::Write(DataOutputStream& stream) const {
    stream.Write(static_cast<double>(m_value));
    stream.Write(*OrPlain(m_units));
}

template <class T>
bool UnitizedValue<T>::Read(DataInputStream& stream) {
    double value = 0;
    UnitDescriptor units;
    if (!stream.Read(value) || !stream.Read(units))
        return false;
    if (units != *OrPlain(m_units))
        m_units = std::make_shared<const UnitDescriptor>(std::move(units));
    m_value = static_cast<T>(value);
    return true;
}

template <class T>
std::uint64_t UnitizedValue<T>::GetSerializedSize() const {
    return sizeof(double) + OrPlain(m_units)->GetSerializedSize();
}

template class UnitizedValue<double>;

} // namespace Qor::Core
