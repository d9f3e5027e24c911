#pragma once

#include <QorCore/Alert.h>
#include <QorCore/Pointers.h>
#include <QorCore/UnitDescriptor.h>

#include <string_view>
#include <vector>

namespace Qor::Core {

QOR_DECLARE_ALERT(QOR_CORE_API, UnitNotFound, Error);

/// The units that are known by name: the standard units, and what the program adds. Names are compared exactly.
///
/// Thread rule: may be used by any number of threads. What `Find` returned stays valid.
class QOR_CORE_API UnitDictionary {
public:
    static UnitDictionary& Instance();

    /// The unit of that name, or an empty pointer; the empty name is the unit of plain numbers.
    QorConstPtr<UnitDescriptor> Find(std::string_view name) const;
    /// The same, but raises `UnitNotFound` when there is none.
    QorConstPtr<UnitDescriptor> Get(std::string_view name) const;
    /// The first unit of these dimensions without an offset whose scale is this one but for rounding, or an empty
    /// pointer.
    QorConstPtr<UnitDescriptor> FindLike(const UnitDescriptor::Exponents& exponents, double scale) const;
    /// Makes another unit known. Raises `LogicError`, changing nothing, when its name stands for a different unit;
    /// to add what is known already is no error.
    void Add(const UnitDescriptor& unit);

    /// The units that are known from the start, always in the same order.
    static const std::vector<QorConstPtr<UnitDescriptor>>& GetStandardUnits();

    UnitDictionary(const UnitDictionary&) = delete;
    UnitDictionary& operator=(const UnitDictionary&) = delete;

private:
    UnitDictionary();
    ~UnitDictionary();

    struct Entries;
    std::unique_ptr<Entries> m_entries;
};

} // namespace Qor::Core
