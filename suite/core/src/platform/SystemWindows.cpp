#include "../FileError.h"
#include "../NativePath.h"

#include <QorCore/System.h>
#include <QorCore/Utf8.h>

#include <array>
#include <limits>
#include <memory>
#include <string>
#include <windows.h>

// The lean windows.h leaves it out, and shellapi.h cannot stand in front of that.
extern "C" __declspec(dllimport) wchar_t** __stdcall CommandLineToArgvW(const wchar_t* commandLine, int* count);

namespace Qor::Core {

std::uint64_t System::GetPageSize() {
    SYSTEM_INFO info = {};
    GetSystemInfo(&info);
    return info.dwPageSize;
}

PathName System::GetProcessDirectory() {
    constexpr std::size_t longest = 1u << 15;
    std::wstring name(longest, L'\0');
    const DWORD size = GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size()));
    if (size == 0 || size == name.size())
        RaiseFileError("learn the executable file of the process", PathName(),
                       {eFILE_OTHER, static_cast<std::int32_t>(GetLastError())}, QOR_CODE_CONTEXT("System"));
    name.resize(size);
    return FromNative(std::filesystem::path(name).parent_path());
}

// Those of `main` have passed through the code page.
std::vector<std::string> System::GetArguments(int, char**) {
    int count = 0;
    const std::unique_ptr<wchar_t*, decltype(&LocalFree)> words(CommandLineToArgvW(GetCommandLineW(), &count),
                                                                &LocalFree);
    std::vector<std::string> arguments;
    for (int n = 1; words && n < count; ++n)
        arguments.push_back(Utf8FromWide(words.get()[n]));
    return arguments;
}

std::uint64_t System::GetProcessNumber() { return GetCurrentProcessId(); }

bool System::IsProcessRunning(std::uint64_t processNumber) {
    if (processNumber == 0 || processNumber > std::numeric_limits<DWORD>::max())
        return false;
    const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(processNumber));
    if (process == nullptr)
        return GetLastError() == ERROR_ACCESS_DENIED;
    const bool running = WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
    CloseHandle(process);
    return running;
}

// A character device without a console's mode is a port, or NUL.
bool System::IsTerminal(EStandardStream stream) {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(stream == eSTANDARD_OUTPUT ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE), &mode) != 0;
}

std::string System::DescribeError(std::int32_t systemError) {
    std::array<wchar_t, 1024> buffer = {};
    const DWORD how = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    DWORD size = FormatMessageW(how, nullptr, static_cast<DWORD>(systemError), 0, buffer.data(),
                                static_cast<DWORD>(buffer.size()), nullptr);
    while (size > 0 && (buffer[size - 1] == L'\n' || buffer[size - 1] == L'\r' || buffer[size - 1] == L'.'))
        --size;
    return size > 0 ? Utf8FromWide(std::wstring_view(buffer.data(), size)) : "error " + std::to_string(systemError);
}

std::int32_t GetNamesIn(const PathName& directory, std::vector<std::string>& names) {
    std::error_code error;
    for (std::filesystem::directory_iterator entry(ToNative(directory), error), end; !error && entry != end;
         entry.increment(error))
        names.push_back(FromNative(entry->path().filename()).ToString());
    return error.value();
}

} // namespace Qor::Core
