// The border to OpenImageIO, which no exception may cross.
#pragma once

#include <exception>

namespace ZetImageIo {

/// Does `action`; what it throws becomes the error text of the input or output, and the answer false.
template <class Image, class Action>
bool guarded(const Image& image, Action&& action) {
    try {
        action();
        return true;
    } catch (const std::exception& error) {
        image.errorfmt("{}", error.what());
    } catch (...) {
        image.errorfmt("failed for an unknown reason");
    }
    return false;
}

} // namespace ZetImageIo
