#pragma once

#include <QorCore/Alert.h>
#include <QorCore/BinaryFileStream.h>

#include <functional>

namespace Qor::Core {

/// The file was changed by somebody else since it was opened or saved here; going on discards that change.
QOR_DECLARE_ALERT(QOR_CORE_API, FileChangedOnDisk, Warning);
/// The file cannot be replaced in one step and will be written in place: a crash while that happens damages it.
QOR_DECLARE_ALERT(QOR_CORE_API, FileSavedInPlace, Warning);

/// Gives a file new content so that, whatever fails, it holds its complete old or its complete new content.
///
/// The content is written to a temporary file in the same directory, brought to the medium, and then takes the name of
/// the file, behind symbolic links. Permissions are kept, owner and extended attributes as far as allowed. Programs
/// that have the old file open keep reading the old content. Temporary files of processes that died meanwhile are
/// removed.
///
/// A file with several hard links, a special file, one in a directory that admits no new file, and one whose name
/// cannot be given away, is written in place, from a complete image in memory; `FileSavedInPlace` is raised before,
/// once as long as a file is open. When that fails half-way the old content is written back; if not even that is
/// possible, the error has the variable "Old content" = "not restored". A full or failing medium never leads here.
///
/// Thread rule: one thread at a time for a file; different files are independent.
class QOR_CORE_API SafeFileWriter {
public:
    /// Writes the new content to the stream that is handed in, from the first byte to the last. That stream is buffered
    /// and needs no flush. May raise anything: the save has failed then.
    using WriteContent = std::function<void(BinaryOutputStream&)>;

    SafeFileWriter() = delete;

    /// Replaces the content of the file that is open for writing in `file`, which then has the new one open, both
    /// positions at its end. Raises `FileChangedOnDisk` before, if another program has changed or replaced the file.
    /// Raises `IOError`, and passes on what `writeContent` and the handlers of warnings raise: stream and file are then
    /// as before. Only two failures come after the replacement: that the directory cannot be brought to the medium
    /// (the stream has the new content open), and, on systems that cannot replace open files, that the file cannot be
    /// opened again (the stream is closed).
    static void Save(BinaryFileStream& file, const WriteContent& writeContent);

    /// The same for a file that is not open here; it is created when missing.
    static void Save(const PathName& path, const WriteContent& writeContent);
};

} // namespace Qor::Core
