#include "PictureFile.h"

#include "ExrFile.h"
#include "OwnModules.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace ZetTool {
namespace {

const PictureLibrary& loadPictureLibrary() {
    const std::filesystem::path file = ownPictureLibrary();
    void* const module = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    const auto entry =
        module ? reinterpret_cast<PictureLibraryEntry>(::dlsym(module, pictureLibraryEntry)) : nullptr;
    if (!entry)
        throw std::runtime_error("cannot load the picture library " + file.string() + ": " + ::dlerror());
    return *entry();
}

/// For all but what goes without it.
const PictureLibrary& library() {
    static const PictureLibrary& loaded = loadPictureLibrary();
    return loaded;
}

void checkReadable(const std::filesystem::path& file) {
    const auto refuse = [&](const std::string& reason) {
        throw std::runtime_error(file.string() + ": " + reason);
    };
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (status.type() == std::filesystem::file_type::not_found)
        refuse("does not exist");
    if (is_directory(status))
        refuse("is a folder");
    if (::access(file.c_str(), R_OK) != 0)
        refuse(std::generic_category().message(errno));
    if (exists(status) && !is_regular_file(status)) // whose reader may wait for ever
        refuse("is a device, pipe or socket, not a file");
}

} // namespace

PictureHeader readPictureHeader(const std::filesystem::path& file) {
    checkReadable(file);
    if (const auto exr = ExrFile::open(file))
        return exr->header();
    return library().header(file);
}

Picture readPicture(const std::filesystem::path& file, const HeaderCheck& check) {
    checkReadable(file);
    if (const auto exr = ExrFile::open(file)) {
        if (check)
            check(exr->header());
        if (auto picture = exr->read())
            return std::move(*picture);
    } // which does not say what is wrong
    return library().read(file, check);
}

std::unique_ptr<const PictureFileType> pictureFileType(const std::filesystem::path& file) {
    return library().type(file);
}

} // namespace ZetTool
