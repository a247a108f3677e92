#include "PictureFile.h"

#include "ExrFile.h"
#include "OwnModules.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>

namespace ZetTool {
namespace {

[[noreturn]] void refuse(const std::filesystem::path& file, const std::string& reason) {
    throw std::runtime_error(file.string() + ": " + reason);
}

const PictureLibrary& loadPictureLibrary() {
    const std::filesystem::path file = ownPictureLibrary();
    void* const module = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    const auto entry =
        module ? reinterpret_cast<PictureLibraryEntry>(::dlsym(module, pictureLibraryEntry)) : nullptr;
    if (!entry)
        throw std::runtime_error("cannot load the picture library: " + std::string(::dlerror()));
    const PictureLibrary* const loaded = entry(ZET_VERSION);
    if (!loaded)
        refuse(file, "is the picture library of another version of zet");
    return *loaded;
}

/// For all but what goes without it.
const PictureLibrary& library() {
    static const PictureLibrary& loaded = loadPictureLibrary();
    return loaded;
}

void checkReadable(const std::filesystem::path& file) {
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (status.type() == std::filesystem::file_type::not_found)
        refuse(file, "does not exist");
    if (is_directory(status))
        refuse(file, "is a folder");
    if (::access(file.c_str(), R_OK) != 0)
        refuse(file, std::generic_category().message(errno));
    if (exists(status) && !is_regular_file(status)) // whose reader may wait for ever
        refuse(file, "is a device, pipe or socket, not a file");
    if (std::filesystem::file_size(file, error) == 0)
        refuse(file, "is empty");
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
        const PictureHeader header = exr->header();
        if (check)
            check(header);
        try {
            if (auto picture = exr->read())
                return std::move(*picture);
        } catch (const std::bad_alloc&) {
            refuse(file, "not enough memory for " + header.size.text() + " pixels");
        }
        // The library says what is wrong with it.
    }
    return library().read(file, check, pictureMemory());
}

std::unique_ptr<const PictureFileType> pictureFileType(const std::filesystem::path& file) {
    return library().type(file);
}

} // namespace ZetTool
