#pragma once

#include "../serialization/BuiltInTraitsBodies.h"
#include "../serialization/ElementBlock.h"
#include "../serialization/XMLUnitReader.h"
#include "../serialization/XMLValueSerializer.h"

#include <QorCore/BoundedStreams.h>
#include <QorCore/XMLWriter.h>

#include <algorithm>
#include <array>
#include <optional>
#include <tuple>

namespace Qor::Tivor {

/// One of the spacings of a T, by the name of its element in XML.
template <class T>
struct StoredSpacing {
    const char* name;
    const UnitizedDouble& (T::*get)() const;
};

/// The spacings in the order in which they are stored, and in which a T is made from them.
template <class T>
struct StoredSpacings;

/// Reads the content of one spacing's element.
class XMLSpacingReader final : public XMLUnitizedReader {
public:
    explicit XMLSpacingReader(std::optional<UnitizedDouble>& target) : m_target(target) {}

protected:
    void Take(UnitizedDouble value) override { m_target = std::move(value); }

private:
    std::optional<UnitizedDouble>& m_target;
};

/// Reads a T from an element for each spacing.
template <class T>
class FixedSpacingXMLHandler : public XMLElementReader {
public:
    void PrepareForNewContent() override {
        XMLElementReader::PrepareForNewContent();
        m_spacings = {};
    }
    /// Raises `IOError` when a spacing is missing.
    void OnEndContent() override {
        for (std::size_t i = 0; i < rows.size(); ++i)
            if (!m_spacings[i])
                RaiseUnexpectedXML('"' + std::string(rows[i].name) + '"', "the data of a fixed spacing", "none");
        Take(std::apply([](const auto&... spacing) { return T(*spacing...); }, m_spacings));
    }

protected:
    virtual void Take(T value) = 0;

    bool Knows(std::string_view parent, std::string_view tag) const final {
        return parent.empty() && FindRow(tag) != rows.size();
    }
    void OnElement(std::string_view, std::string_view tag, const XMLAttributes&) final {
        PushHandler(std::make_shared<XMLSpacingReader>(m_spacings[FindRow(tag)]));
    }

private:
    static constexpr auto& rows = StoredSpacings<T>::rows;

    static std::size_t FindRow(std::string_view name) {
        const auto found = std::find_if(rows.begin(), rows.end(), [&](const auto& row) { return row.name == name; });
        return static_cast<std::size_t>(found - rows.begin());
    }

    std::array<std::optional<UnitizedDouble>, StoredSpacings<T>::rows.size()> m_spacings;
};

/// Data block: the spacings as unitized values; in XML, each in an element of its own.
template <class T>
class FixedSpacingSerializer final : public XMLValueSerializer<T, FixedSpacingXMLHandler<T>> {
public:
    using XMLValueSerializer<T, FixedSpacingXMLHandler<T>>::XMLValueSerializer;

    std::uint64_t DataFromBinary(std::uint64_t size, Core::BinaryInputStream& binaryStream) override {
        Core::BoundedInputStream block(binaryStream, size); // no length inside may lead out of it
        Core::DataInputStream stream(block);
        std::array<UnitizedDouble, rows.size()> spacings;
        for (UnitizedDouble& spacing : spacings)
            if (!stream.Read(spacing))
                RaiseEndOfData(this->m_object, size - block.Remaining(), size);
        this->m_object.SetValue(std::make_from_tuple<T>(spacings));
        return size - block.Remaining();
    }

    std::uint64_t DataToBinary(Core::BinaryOutputStream& binaryStream) override {
        const auto lock = this->m_object.GetDataLock();
        const T& value = this->m_object.GetValue();
        Core::DataOutputStream stream(binaryStream);
        for (const StoredSpacing<T>& row : rows)
            stream.Write((value.*row.get)());
        return GetStoredSize(value);
    }

    void DataToXML(std::ostream& stream, Core::XMLWriter& writer) override {
        const auto lock = this->m_object.GetDataLock();
        const T& value = this->m_object.GetValue();
        for (const StoredSpacing<T>& row : rows) {
            writer.StartTag(stream, row.name);
            (value.*row.get)().ToXML(stream, writer);
            writer.EndTag(stream);
        }
    }

protected:
    void Take(T value) override { this->m_object.SetValue(std::move(value)); }

private:
    static constexpr auto& rows = StoredSpacings<T>::rows;

    std::uint64_t GetStoredSize(const T& value) const override {
        std::uint64_t size = 0;
        for (const StoredSpacing<T>& row : rows)
            size += (value.*row.get)().GetSerializedSize();
        return size;
    }
};

template <class T>
std::shared_ptr<Serializer> BuiltInTraits<T>::MakeSerializer(DataOf<T>& object) {
    return std::make_shared<FixedSpacingSerializer<T>>(object);
}

} // namespace Qor::Tivor
