#include "spectrum.h"

#include <QorCore/DataStreams.h>
#include <QorCore/Message.h>
#include <Tivor/PlugIn.h>

using Example::Spectrum;

namespace Qor::Tivor {

template <>
struct ValueTraits<Spectrum> {
    static ETypeID GetTypeID() { return eNO_TYPE; }
    static std::string GetTypeName() { return "Example.Spectrum"; }
    static std::shared_ptr<Spectrum> Clone(const Spectrum& value) { return std::make_shared<Spectrum>(value); }
    static void Assign(Spectrum& target, const Spectrum& value) { target = value; }
    static std::shared_ptr<Spectrum> CreateDefault() { return std::make_shared<Spectrum>(); }
    static boost::logic::tribool Equal(const Spectrum& left, const Spectrum& right) {
        return left.points == right.points;
    }
    static std::string ToString(const Spectrum& value) {
        return Core::FormatText("spectrum of %1% points", {value.points.size()});
    }
    static std::shared_ptr<Serializer> MakeSerializer(Data<Spectrum>& object);
    template <class... Arguments>
    static std::shared_ptr<Data<Spectrum>> MakeData(Arguments&&... arguments) {
        return std::make_shared<Data<Spectrum>>(std::forward<Arguments>(arguments)...);
    }
};

namespace {

const char* const formatVersion = "1";

// The data: a 64-bit count, then wavelength and intensity of each point.
class SpectrumSerializer final : public Serializer {
public:
    explicit SpectrumSerializer(Data<Spectrum>& object) : m_object(object) {}

    DataObject& GetDataObject() override { return m_object; }
    std::string GetVersion() override { return formatVersion; }
    std::string GetModule() override { return "spectrum.dll"; }
    std::uint64_t GetDataSize_bytes() const override {
        const auto lock = m_object.GetDataLock();
        return countBytes + pointBytes * m_object.GetValue().points.size();
    }
    bool DataSizeIsConstant() const override { return false; }

    std::uint64_t DataFromBinary(std::uint64_t size, Core::BinaryInputStream& stream) override {
        Core::DataInputStream input(stream);
        std::uint64_t count = 0;
        if (size < countBytes || !input.Read(count))
            RaiseEnd("a count");
        if (const std::uint64_t room = (size - countBytes) / pointBytes; count > room)
            Core::Error::RaiseError(
                Core::IOError(Core::FormatText("Expected at most %1% points in %2% bytes of a spectrum, found %3%",
                                               {room, size, count})),
                QOR_CODE_CONTEXT("Spectrum"), "Example.Spectrum");
        Spectrum value; // grows with what arrives, whatever the count says
        while (value.points.size() < count) {
            Spectrum::Point point;
            if (!input.Read(point.wavelength) || !input.Read(point.intensity))
                RaiseEnd("a point");
            value.points.push_back(point);
        }
        m_object.SetValue(std::move(value));
        return countBytes + pointBytes * count;
    }

    std::uint64_t DataToBinary(Core::BinaryOutputStream& stream) override {
        const auto lock = m_object.GetDataLock();
        Core::DataOutputStream output(stream);
        const std::vector<Spectrum::Point>& points = m_object.GetValue().points;
        output.Write(std::uint64_t{points.size()});
        for (const Spectrum::Point& point : points) {
            output.Write(point.wavelength);
            output.Write(point.intensity);
        }
        return countBytes + pointBytes * points.size();
    }

private:
    static constexpr std::uint64_t countBytes = 8;
    static constexpr std::uint64_t pointBytes = 16;

    [[noreturn]] static void RaiseEnd(const char* what) {
        Core::Error::RaiseError(
            EndOfStreamOnInput(Core::FormatText("Expected %1% of a spectrum, found the end of the data", {what})),
            QOR_CODE_CONTEXT("Spectrum"), "Example.Spectrum");
    }

    Data<Spectrum>& m_object;
};

} // namespace

std::shared_ptr<Serializer> ValueTraits<Spectrum>::MakeSerializer(Data<Spectrum>& object) {
    return std::make_shared<SpectrumSerializer>(object);
}

} // namespace Qor::Tivor

TIVOR_DATA_OBJECT_FACTORY(className, version) {
    if (className == "Example.Spectrum" && version == Qor::Tivor::formatVersion)
        return std::make_shared<Qor::Tivor::Data<Spectrum>>(Spectrum());
    return nullptr; // not one of ours, or of a version that we do not read
}
