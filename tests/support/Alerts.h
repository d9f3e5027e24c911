#pragma once

#include <QorCore/Alert.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Qor::Core::Testing {

/// Keeps the warnings that are raised while it lives; may refuse to let the operation go on.
class Warnings final : public AlertHandler {
public:
    explicit Warnings(bool refuse = false) : m_refuse(refuse) {}

    void OnWarning(const Warning& warning) override {
        seen.push_back(warning);
        if (m_refuse)
            throw Error("refused");
    }

    std::vector<std::string> GetNames() const {
        std::vector<std::string> names;
        for (const Warning& warning : seen)
            names.push_back(warning.GetTypeName());
        return names;
    }
    /// Class, category and text of each, as `ToString` tells them.
    std::vector<std::string> Tell() const {
        std::vector<std::string> told;
        for (const Warning& warning : seen)
            told.push_back(warning.ToString());
        return told;
    }

    std::vector<Warning> seen;

private:
    bool m_refuse;
};

/// The error that an operation raises; a failure of the test when it raises none, or one of another class.
template <class E, class Operation>
E RaisedBy(Operation operation) {
    try {
        operation();
    } catch (const E& error) {
        return error;
    } catch (const std::exception& error) {
        ADD_FAILURE() << "raised something else: " << error.what();
        return E("");
    }
    ADD_FAILURE() << "raised nothing";
    return E("");
}

/// What an operation raises, as `ToString` tells it; "" when it raises nothing.
template <class Operation>
std::string ErrorOf(Operation operation) {
    try {
        operation();
    } catch (const Error& error) {
        return error.ToString();
    }
    return {};
}

} // namespace Qor::Core::Testing
