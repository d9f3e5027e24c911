#pragma once

#include <cstdint>

namespace Qor::Core {
class BinaryInputStream;
class BinaryOutputStream;
class Lock;
class Mutex;
class XMLWriter;
} // namespace Qor::Core

namespace Qor::Tivor {
enum ETypeID : std::uint32_t;
class ArrayPosition1D;
class ArrayPosition2D;
class BinaryDataFile;
class Data1D;
class Data2D;
class DataContainer;
class DataContainerWrapper;
class DataFile;
class DataObject;
class DataSet;
class FixedSpacing1D;
class FixedSpacing2D;
class IDataSet;
class MutexLockableDataObject;
class Position1D;
class Position2D;
class ScalarData;
class Serializer;
class XMLContentHandler;
class XMLDataFile;
class XMLHandler;
template <class T>
class GenericWrapper;
template <class T, class Wrapper = GenericWrapper<T>>
class Data;
} // namespace Qor::Tivor
