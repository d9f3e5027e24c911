#pragma once

#include "ValueSerializer.h"

namespace Qor::Tivor {

/// Base of the serializers of wrapped values that have an XML form of their own and read it themselves, as a `Reader`.
template <class T, class Reader>
class XMLValueSerializer : public ValueSerializer<T>,
                           public Reader,
                           public std::enable_shared_from_this<XMLValueSerializer<T, Reader>> {
public:
    using ValueSerializer<T>::ValueSerializer;

    std::string GetXMLEncoding() override { return {}; }
    /// Itself, unless the element has an encoding.
    std::shared_ptr<XMLContentHandler>
    GetXMLContentHandler(const std::unordered_map<std::string, std::string>& attributes) final {
        const auto encoding = attributes.find("encoding");
        return encoding == attributes.end() || encoding->second.empty()
                   ? this->shared_from_this()
                   : ValueSerializer<T>::GetXMLContentHandler(attributes);
    }
};

} // namespace Qor::Tivor
