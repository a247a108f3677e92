#include "Threads.h"

#include <OpenImageIO/imageio.h>
#include <opencv2/core/utility.hpp>

#include <mutex>

namespace ZetImageIo {

void shareThreads() {
    static std::once_flag shared;
    std::call_once(shared, [] {
        const int threads = cv::getNumThreads();
        OIIO::attribute("threads", threads);
        OIIO::attribute("exr_threads", threads > 1 ? threads : -1); // -1: decode on the calling thread
    });
}

} // namespace ZetImageIo
