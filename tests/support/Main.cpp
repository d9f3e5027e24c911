#include "OpenFiles.h"
#include "Platform.h"

#include <gtest/gtest.h>

#include <clocale>
#include <optional>

// Every test program takes the locale of its environment, as an application may: no result may depend on it.
int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    std::setlocale(LC_ALL, "");
    std::optional<Qor::Core::Testing::OpenFiles> openFiles;
    if (Qor::Core::Testing::isWindows)
        openFiles.emplace();
    return RUN_ALL_TESTS();
}
