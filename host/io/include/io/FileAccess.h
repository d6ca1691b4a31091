#pragma once

namespace io {

/// Makes this library what the host reads and writes files with (ZxFileAccess).
void installFileAccess();

} // namespace io
