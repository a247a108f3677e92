// The module with which the tool reads and writes pictures.
#include "PictureReading.h"
#include "PictureWriting.h"

#include <cstring>

namespace {

class OpenImageIo final : public ZetTool::PictureLibrary {
public:
    ZetTool::PictureHeader header(const std::filesystem::path& file) const override {
        return ZetImageIo::readPictureHeader(file);
    }
    ZetTool::Picture read(const std::filesystem::path& file, const ZetTool::HeaderCheck& check,
                          IMemoryPool& memory) const override {
        return ZetImageIo::readPicture(file, check, memory);
    }
    std::unique_ptr<const ZetTool::PictureFileType> type(const std::filesystem::path& file) const override {
        return ZetImageIo::pictureFileType(file);
    }
};

} // namespace

extern "C" [[gnu::visibility("default")]] const ZetTool::PictureLibrary*
zetPictureLibrary(const char* programVersion) {
    static const OpenImageIo library;
    return std::strcmp(programVersion, ZET_VERSION) == 0 ? &library : nullptr;
}
