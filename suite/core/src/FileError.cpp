#include "FileError.h"

#include <QorCore/Message.h>
#include <QorCore/System.h>

namespace Qor::Core {

void RaiseFileError(const std::string& attempt, const PathName& path, const FileStatus& status, CodeContext context) {
    const std::string answer =
        status.systemError != 0 ? System::DescribeError(status.systemError) : std::string("nothing was done");
    IOError error(FormatText("Attempt to %1%; the system answered: %2%", {attempt, answer}));
    error.AddVariable("File", path.ToString());
    error.AddVariable("System error", std::to_string(status.systemError));
    Error::RaiseError(std::move(error), std::move(context), "Qor.Core.File");
}

} // namespace Qor::Core
