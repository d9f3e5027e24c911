#pragma once

#include <Tivor/DataContainer.h>

#include <memory>
#include <string>
#include <string_view>

namespace Qor::Tivor::Testing {

/// Bytes as one writes them by hand: pairs of hexadecimal digits and 'text', with blanks and bars between them.
std::string Bytes(std::string_view notation);

/// What is written for an object under a key; for a container, what is written for its entries.
std::string Stored(DataObject& object, const std::string& key = "k");
std::string Stored(const DataContainer& container);
/// The document that is written for a container.
std::string StoredXML(const DataContainer& container);

/// The object at the beginning of the bytes; all of them must be consumed.
std::shared_ptr<DataObject> Read(const std::string& bytes);
/// Adds the entries that the bytes hold; returns how many bytes were read.
std::uint64_t ReadInto(DataContainer& container, const std::string& bytes);
/// Adds the entries that the document holds.
void ReadXMLInto(DataContainer& container, const std::string& document);

/// Whether other threads can have all locks of the container, and this one holds nothing that a failure left behind.
void ExpectNothingHeld(const DataContainer& container);

/// The keys of a container, in order, each followed by a blank.
std::string Keys(const DataContainer& container);

/// The object of that type under a key.
template <class T>
Data<T>& At(DataContainer& container, const std::string& key) {
    return dynamic_cast<Data<T>&>(*container.Get(key));
}

} // namespace Qor::Tivor::Testing
