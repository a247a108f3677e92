// Files behind an interface, so that other streams can take their place.
#pragma once

#include <filesystem>
#include <fstream>
#include <ios>
#include <memory>
#include <string>

namespace MediaConversion {

/// The operations of a standard stream; each behaves like the one of its name.
class IIoStream {
public:
    virtual ~IIoStream() = default;

    virtual void clear() = 0;
    virtual bool fail() const = 0;
    virtual bool good() const = 0;
    virtual bool eof() const = 0;
    virtual std::streamsize gcount() const = 0;
    virtual void read(char* data, std::streamsize count) = 0;
    virtual void write(const char* data, std::streamsize count) = 0;
    virtual void seekg(std::streampos position) = 0;
    virtual void seekg(std::streamoff offset, std::ios_base::seekdir direction) = 0;
    virtual std::streampos tellg() = 0;
};

/// The writer opens a path for output and writes twice; the reader opens one for input, seeks the end for the
/// length, and reads from the beginning on. Both look at `fail` after each call.
class IFileStream : public IIoStream {
public:
    virtual void open(const char* path, std::ios_base::openmode mode) = 0;
    virtual void open(std::string const& path, std::ios_base::openmode mode) = 0;
    virtual void open(std::filesystem::path const& path, std::ios_base::openmode mode) = 0;
    virtual bool is_open() const = 0;
    /// Fails, as `fail` then tells, when what is left in the stream's buffer cannot be written.
    virtual void close() = 0;
};

class IFileStreamFactory {
public:
    virtual ~IFileStreamFactory() = default;
    virtual std::unique_ptr<IFileStream> create() = 0;
};

/// A file of the operating system.
class FileStream final : public IFileStream {
public:
    void clear() override { stream.clear(); }
    bool fail() const override { return stream.fail(); }
    bool good() const override { return stream.good(); }
    bool eof() const override { return stream.eof(); }
    std::streamsize gcount() const override { return stream.gcount(); }
    void read(char* data, std::streamsize count) override { stream.read(data, count); }
    void write(const char* data, std::streamsize count) override { stream.write(data, count); }
    void seekg(std::streampos position) override { stream.seekg(position); }
    void seekg(std::streamoff offset, std::ios_base::seekdir direction) override {
        stream.seekg(offset, direction);
    }
    std::streampos tellg() override { return stream.tellg(); }
    void open(const char* path, std::ios_base::openmode mode) override { stream.open(path, mode); }
    void open(std::string const& path, std::ios_base::openmode mode) override { stream.open(path, mode); }
    void open(std::filesystem::path const& path, std::ios_base::openmode mode) override {
        stream.open(path, mode);
    }
    bool is_open() const override { return stream.is_open(); }
    void close() override { stream.close(); }

private:
    std::fstream stream;
};

class FileStreamFactory final : public IFileStreamFactory {
public:
    std::unique_ptr<IFileStream> create() override { return std::make_unique<FileStream>(); }
};

} // namespace MediaConversion
