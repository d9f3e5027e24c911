#pragma once

#include <Tivor/DataObject.h>

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>

namespace Qor::Tivor::Testing {

/// An object of a class from outside the library: it overrides what it must, and a serializer that may misbehave.
class ForeignObject : public DataObject {
public:
    std::string GetTypeName() const override { return "Test.Foreign"; }
    bool HoldsType(const std::type_info&) const override { return false; }
    bool HoldsSameTypeAs(const DataObject& other) const override;
    std::shared_ptr<DataObject> Clone() override { return std::make_shared<ForeignObject>(*this); }
    /// One that writes `written`; none while `isSerializable` is false.
    std::shared_ptr<Serializer> GetSerializer() override;

    bool isSerializable = true;
    std::uint64_t announced = 0;
    std::string written;
    std::uint64_t returned = 0;
    std::function<void()> onSize;
    std::function<void()> onWrite;
    // An XML form of its own; without them it has the default one.
    std::function<void(std::ostream&, Core::XMLWriter&)> onWriteXML;
    std::function<std::shared_ptr<XMLContentHandler>()> onReadXML;
};

} // namespace Qor::Tivor::Testing
