// Saves the entries of two files into a third, again and again and in turn, until it ends itself: some time after so
// many saves, at whatever it is about, and without a step more of its own.
//
//     KilledSaverProgram <file> <one> <other> <saves> <microseconds>

#include <Tivor/DataFile.h>

#include <chrono>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <thread>

using namespace Qor::Tivor;

int main(int, char** arguments) {
    try {
        const auto open = [&](int number, DataFile::EAccess access) {
            return DataFile::Open(arguments[number], access, DataFile::eOPEN_EXISTING, "", nullptr);
        };
        const auto file = open(1, DataFile::eREAD_WRITE);
        const std::shared_ptr<DataFile> contents[] = {open(2, DataFile::eREAD_ONLY), open(3, DataFile::eREAD_ONLY)};
        const int saves = std::atoi(arguments[4]);
        for (int save = 0;; ++save) {
            if (save == saves)
                std::thread([delay = std::chrono::microseconds(std::atoi(arguments[5]))] {
                    std::this_thread::sleep_for(delay);
                    std::_Exit(9);
                }).detach();
            file->Assign(*contents[save % 2]);
            file->Flush();
        }
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
