#include <gtest/gtest.h>

#include <clocale>

// Every test program takes the locale of its environment, as an application may: no result may depend on it.
int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    std::setlocale(LC_ALL, "");
    return RUN_ALL_TESTS();
}
