// OpenImageIO's threads.
#pragma once

namespace ZetImageIo {

/// Gives OpenImageIO as many threads as OpenCV may use. Only the first call does: it must not be told while
/// another thread works with it.
void shareThreads();

} // namespace ZetImageIo
