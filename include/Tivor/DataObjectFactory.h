#pragma once

#include <Tivor/DataObject.h>

#include <string>

namespace Qor::Tivor {

/// Turns the description in a header into a new, empty data object that a serializer can fill.
///
/// Thread rule: may be used by any number of threads.
class TIVOR_API DataObjectFactory {
public:
    DataObjectFactory(const DataObjectFactory&) = delete;
    DataObjectFactory& operator=(const DataObjectFactory&) = delete;

    static DataObjectFactory& Instance();

    /// The built-in class that the identifier denotes, bit 7 aside; the class name decides for identifiers that stand
    /// for several classes, and names a scalar. An empty pointer for what names no built-in class.
    std::shared_ptr<DataObject> CreateBuiltInDataObject(ETypeID typeID, const std::string& className);

private:
    DataObjectFactory();
    ~DataObjectFactory();
};

} // namespace Qor::Tivor
