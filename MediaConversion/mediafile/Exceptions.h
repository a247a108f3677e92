// What the library throws about files.
#pragma once

#include <stdexcept>
#include <string>

namespace MediaConversion {

class InternalException : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A file could not be read or written.
class MediaFileAccessException : public std::runtime_error {
public:
    MediaFileAccessException(std::string filePath, std::string const& message)
        : std::runtime_error(message), path(std::move(filePath)) {}

    std::string const& filePath() const { return path; }

private:
    std::string path;
};

} // namespace MediaConversion
