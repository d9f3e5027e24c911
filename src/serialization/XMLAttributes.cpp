#include "XMLAttributes.h"

#include <QorCore/Base64.h>
#include <QorCore/Message.h>
#include <Tivor/XMLContentHandler.h>

#include <algorithm>
#include <charconv>

namespace Qor::Tivor {

namespace {

const char* const encodingSuffix = "encoding";

[[noreturn]] void RaiseBadAttribute(const std::string& name, const std::string& expected, const std::string& found) {
    Core::Error::RaiseError(Core::IOError(Core::FormatText("Expected %2% in the attribute \"%1%\", found \"%3%\"",
                                                           {name, expected, found})),
                            QOR_CODE_CONTEXT("XMLHandler"), "Qor.Tivor.XMLHandler");
}

bool IsDecimal(const std::string& text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// What is too large becomes the largest number.
template <class T>
T GetDecimal(const std::string& text) {
    T number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() ? number : std::numeric_limits<T>::max();
}

std::uint16_t GetTypeCode(const std::string& tag, const XMLAttributes& attributes) {
    const std::string* const text = FindXMLAttribute(attributes, "typeid");
    if (tag == containerTag && text == nullptr)
        return eDATA_CONTAINER;
    if (text == nullptr || !IsDecimal(*text))
        RaiseInvalidDataTag(tag, "a decimal attribute \"typeid\" was expected");
    const auto code = GetDecimal<std::uint16_t>(*text);
    if (tag == containerTag && WithoutFlag(code) != eDATA_CONTAINER)
        RaiseInvalidDataTag(tag, "its attribute \"typeid\" names another class");
    return code;
}

} // namespace

const std::string* FindXMLAttribute(const XMLAttributes& attributes, const std::string& name) {
    const auto found = attributes.find(name);
    return found != attributes.end() ? &found->second : nullptr;
}

void DecodeXMLAttributes(XMLAttributes& attributes) {
    for (auto encoding = attributes.begin(); encoding != attributes.end();) {
        const std::string& name = encoding->first;
        const auto value =
            name.ends_with(encodingSuffix) ? attributes.find(name.substr(0, name.size() - 8)) : attributes.end();
        if (value == attributes.end()) {
            ++encoding;
            continue;
        }
        if (encoding->second != Serializer::sDEFAULT_BASE64_ENCODING)
            RaiseBadAttribute(name, Serializer::sDEFAULT_BASE64_ENCODING, encoding->second);
        std::optional<std::string> decoded = Core::DecodeBase64(value->second);
        if (!decoded)
            RaiseBadAttribute(value->first, "Base64", value->second);
        value->second = *std::move(decoded);
        encoding = attributes.erase(encoding);
    }
}

std::optional<std::uint64_t> GetXMLSize(const XMLAttributes& attributes) {
    const std::string* const text = FindXMLAttribute(attributes, "size");
    if (text == nullptr)
        return std::nullopt;
    if (!IsDecimal(*text))
        RaiseBadAttribute("size", "a decimal number", *text);
    return GetDecimal<std::uint64_t>(*text);
}

DataObjectHeader GetXMLHeader(const std::string& tag, const XMLAttributes& attributes) {
    DataObjectHeader header;
    header.typeCode = GetTypeCode(tag, attributes);
    header.InitBuiltInHeaderInfo();
    const auto take = [&attributes](const char* name, std::string& value) {
        const std::string* const found = FindXMLAttribute(attributes, name);
        value = found != nullptr ? *found : std::string();
    };
    const std::uint16_t code = WithoutFlag(header.typeCode);
    if (code == eNO_TYPE || CarriesClassName(code))
        take("typename", header.typeName);
    if (code == eNO_TYPE) {
        take("version", header.version);
        take("module", header.module);
    }
    if (const auto size = GetXMLSize(attributes))
        header.dataSize = *size;
    return header;
}

void RaiseInvalidDataTag(const std::string& tag, const char* reason) {
    InvalidDataTag error(Core::FormatText("Invalid Tivor XML data tag named %1%", {tag}));
    error.AddVariable("Reason", reason);
    Core::Error::RaiseError(std::move(error), QOR_CODE_CONTEXT("XMLHandler"), "Qor.Tivor.XMLHandler.OnStartTagContent");
}

std::string DescribeXMLKey(const XMLAttributes& attributes) {
    const std::string* const key = FindXMLAttribute(attributes, "key");
    return "with key = " + (key != nullptr ? *key : std::string());
}

} // namespace Qor::Tivor
