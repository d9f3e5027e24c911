// Saves a file again and again, alternating between two contents of different length, until it is killed. Says so when
// the first save is done.
//
//     KilledSaverProgram <file> <bytes>

#include "AlternatingContent.h"

#include <Tivor/DataFile.h>

#include <cstdlib>
#include <exception>
#include <iostream>

using namespace Qor::Tivor;

int main(int count, char** arguments) {
    if (count != 3)
        return EXIT_FAILURE;
    try {
        const auto size = static_cast<std::size_t>(std::strtoull(arguments[2], nullptr, 10));
        const auto file = DataFile::Open(arguments[1], DataFile::eREAD_WRITE, DataFile::eOPEN_EXISTING, "", nullptr);
        if (!file)
            return EXIT_FAILURE;
        for (bool longer = false;; longer = !longer) {
            Testing::FillWithAlternative(*file, size, longer);
            file->Flush();
            std::cout << "saved" << std::endl;
        }
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
