#pragma once

#include <QorCore/Alert.h>

#include <string>

namespace Qor::Tivor {

/// Gives what `work` gives; what it raises says which file it was about.
template <class Work>
auto NamingFile(const std::string& fileName, Work work) {
    try {
        return work();
    } catch (Core::Error& error) {
        error.SetVariable("File", fileName); // whatever file it was written through
        throw;
    }
}

} // namespace Qor::Tivor
