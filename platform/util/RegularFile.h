#pragma once

class QFile;

namespace util {

/// Opens `file` for reading when its path names a regular file (links
/// followed). A folder, a FIFO, a socket or a device is refused without
/// being opened, so that a reader never blocks on a pipe nor reads a stream
/// that never ends. Returns false when the file is refused or cannot be
/// opened; the caller says which file.
bool openRegularFile(QFile& file);

} // namespace util
