// Picture files of all sorts. What reads and writes them brings more libraries than all else together, whose
// loading takes longer than a frame; so it is a module, which a program loads when it first needs it.
#pragma once

#include "Picture.h"
#include "PictureFileType.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace ZetTool {

/// May refuse a picture, by throwing, before memory is taken for its pixels.
using HeaderCheck = std::function<void(const PictureHeader&)>;

/// May be used from several threads at once.
class PictureLibrary {
public:
    /// Both take the file's first picture, and media files for pictures too; grey becomes equal red, green
    /// and blue, and straight alpha stays straight. Each is read on as many threads as
    /// OpenCV may use when the first one is. They throw std::runtime_error that names the file and the
    /// reason.
    virtual PictureHeader header(const std::filesystem::path& file) const = 0;
    virtual Picture read(const std::filesystem::path& file, const HeaderCheck& check,
                         IMemoryPool& memory) const = 0;

    /// What the extension of a picture's name stands for. Throws std::runtime_error for an extension that
    /// stands for no type that can be written.
    virtual std::unique_ptr<const PictureFileType> type(const std::filesystem::path& file) const = 0;

protected:
    ~PictureLibrary() = default;
};

/// The module's one symbol, with C linkage. Gives null to a program of another version, whose classes may be
/// others.
using PictureLibraryEntry = const PictureLibrary* (*)(const char* programVersion);
constexpr const char* pictureLibraryEntry = "zetPictureLibrary";

} // namespace ZetTool
