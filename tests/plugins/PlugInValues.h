#pragma once

#include <QorCore/DataStreams.h>
#include <Tivor/GenericWrapper.h>

namespace Qor::Tivor {

namespace Testing {

// The values whose classes the test plug-ins supply.

struct Spectrum {
    static constexpr const char* className = "Test.Spectrum";
    static constexpr std::uint64_t constantSize = 0;

    std::string lines;
    int order = 0;

    bool operator==(const Spectrum&) const = default;
    bool Read(Core::DataInputStream& stream) { return stream.Read(lines) && stream.Read(order); }
    void Write(Core::DataOutputStream& stream) const {
        stream.Write(lines);
        stream.Write(order);
    }
};

struct Band {
    static constexpr const char* className = "Test.Band";
    static constexpr std::uint64_t constantSize = 16;

    double low = 0;
    double high = 0;

    bool operator==(const Band&) const = default;
    bool Read(Core::DataInputStream& stream) { return stream.Read(low) && stream.Read(high); }
    void Write(Core::DataOutputStream& stream) const {
        stream.Write(low);
        stream.Write(high);
    }
};

template <class T>
struct PlugInTraits {
    static ETypeID GetTypeID() { return eNO_TYPE; }
    static std::string GetTypeName() { return T::className; }
    static std::shared_ptr<T> Clone(const T& value) { return std::make_shared<T>(value); }
    static void Assign(T& target, const T& value) { target = value; }
    static std::shared_ptr<T> CreateDefault() { return std::make_shared<T>(); }
    static boost::logic::tribool Equal(const T& left, const T& right) { return left == right; }
    static std::string ToString(const T&) { return T::className; }
    /// The plug-ins only have it.
    static std::shared_ptr<Serializer> MakeSerializer(Data<T>& object);
    template <class... Arguments>
    static std::shared_ptr<Data<T>> MakeData(Arguments&&... arguments) {
        return std::make_shared<Data<T>>(std::forward<Arguments>(arguments)...);
    }
};

} // namespace Testing

template <>
struct ValueTraits<Testing::Spectrum> : Testing::PlugInTraits<Testing::Spectrum> {};
template <>
struct ValueTraits<Testing::Band> : Testing::PlugInTraits<Testing::Band> {};

} // namespace Qor::Tivor
