#include "spectrum.h"

#include <QorCore/Context.h>
#include <Tivor/BinaryDataFile.h>
#include <Tivor/DataObjectFactory.h>

#include <iostream>
#include <stdexcept>

using namespace Qor::Tivor;
namespace Core = Qor::Core;
using Example::Spectrum;

namespace {

class WarningsToScreen final : public Core::AlertHandler {
    void OnWarning(const Core::Warning& warning) override { std::cout << "warning: " << warning.GetText() << '\n'; }
};

void Write() {
    std::string failure;
    const std::shared_ptr<DataObject> object =
        DataObjectFactory::Instance().CreateExternalDataObject("Example.Spectrum", "1", "spectrum.dll", false, failure);
    if (!object)
        throw std::runtime_error(failure);

    BinaryDataFile file("lamp.dataset", DataFile::eREAD_WRITE, DataFile::eCREATE_ALWAYS, nullptr);
    file.Put("Lamp", object);
    file.GetPtr<Spectrum>("Lamp")->points = {{435.8, 0.61}, {546.1, 1}, {579.1, 0.27}};
    file.Flush();
    std::cout << "written: " << object->ToString() << '\n';
}

void Read() {
    const BinaryDataFile file("lamp.dataset", DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, nullptr);
    const auto spectrum = file.GetPtr<Spectrum>("Lamp");
    if (!spectrum)
        throw std::runtime_error("there is no spectrum of a lamp");
    for (const Spectrum::Point& point : spectrum->points)
        std::cout << point.wavelength << " nm: " << point.intensity << '\n';
}

void Copy() {
    Core::ReadLimits limits;
    limits.moduleNames = Core::EModuleNames::none; // load no plug-in, keep its data
    const Core::Context::ScopedLimits scope(limits);
    const BinaryDataFile file("lamp.dataset", DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, nullptr);
    BinaryDataFile copy("copy.dataset", DataFile::eREAD_WRITE, DataFile::eCREATE_ALWAYS, nullptr);
    copy.Append(file);
    copy.Flush();
    std::cout << "copied: " << copy.Get("Lamp")->ToString() << '\n';
}

} // namespace

int main(int argc, char* argv[]) {
    const std::string command = argc == 2 ? argv[1] : "";
    const WarningsToScreen handler;
    try {
        if (command == "write")
            Write();
        else if (command == "read")
            Read();
        else if (command == "copy")
            Copy();
        else
            throw std::runtime_error("expected write, read or copy");
    } catch (const std::exception& error) {
        std::cout << "error: " << error.what() << '\n';
        return 1;
    }
}
