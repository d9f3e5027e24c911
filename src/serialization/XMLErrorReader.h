#pragma once

#include "XMLElementReader.h"

#include <QorCore/Alert.h>

namespace Qor::Tivor {

/// Reads an error from its element "Error", and keeps the name of its class.
class XMLErrorReader : public XMLElementReader {
public:
    void PrepareForNewContent() override;
    /// Raises `IOError` when there was no such element.
    void OnEndContent() override;

protected:
    virtual void Take(Core::Error error) = 0;

    bool Knows(std::string_view parent, std::string_view tag) const final;
    void OnElement(std::string_view parent, std::string_view tag, const XMLAttributes& attributes) final;

private:
    std::optional<Core::Error> m_error;
};

} // namespace Qor::Tivor
