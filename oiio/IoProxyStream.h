// OpenImageIO's way to files that are somewhere else, as the library's streams.
#pragma once

#include <MediaConversion/mediafile/FileStream.h>

#include <OpenImageIO/filesystem.h>

#include <cstdio>

namespace ZetImageIo {

/// Reads or writes what is behind a proxy, whatever path it is opened with. The proxy stays open at the end.
class IoProxyStream final : public MediaConversion::IFileStream {
public:
    using Proxy = OIIO::Filesystem::IOProxy;

    /// The proxy must outlive the stream.
    explicit IoProxyStream(Proxy& behind) : proxy(behind) {}

    void clear() override { failed = atEnd = false; }
    bool fail() const override { return failed; }
    bool good() const override { return !failed && !atEnd; }
    bool eof() const override { return atEnd; }
    std::streamsize gcount() const override { return lastRead; }
    void read(char* data, std::streamsize count) override {
        lastRead = static_cast<std::streamsize>(proxy.read(data, static_cast<std::size_t>(count)));
        if (lastRead < count)
            failed = atEnd = true;
    }
    void write(const char* data, std::streamsize count) override {
        const auto bytes = static_cast<std::size_t>(count);
        failed |= proxy.write(data, bytes) != bytes;
    }
    void seekg(std::streampos position) override { seekg(std::streamoff{position}, std::ios_base::beg); }
    void seekg(std::streamoff offset, std::ios_base::seekdir direction) override {
        const int origin = direction == std::ios_base::beg   ? SEEK_SET
                           : direction == std::ios_base::cur ? SEEK_CUR
                                                             : SEEK_END;
        failed |= !proxy.seek(offset, origin);
    }
    std::streampos tellg() override { return proxy.tell(); }

    void open(const char*, std::ios_base::openmode mode) override {
        const auto wanted = (mode & std::ios_base::out) ? Proxy::Write : Proxy::Read;
        isOpen = proxy.mode() == wanted;
        failed |= !isOpen;
    }
    void open(std::string const&, std::ios_base::openmode mode) override { open("", mode); }
    void open(std::filesystem::path const&, std::ios_base::openmode mode) override { open("", mode); }
    bool is_open() const override { return isOpen; }
    void close() override {
        if (proxy.mode() == Proxy::Write)
            proxy.flush();
        isOpen = false;
    }

private:
    Proxy& proxy;
    std::streamsize lastRead = 0;
    bool isOpen = false;
    bool failed = false;
    bool atEnd = false;
};

/// Streams through a proxy or, without one, of the file system.
class StreamFactory final : public MediaConversion::IFileStreamFactory {
public:
    explicit StreamFactory(IoProxyStream::Proxy* through) : proxy(through) {}

    std::unique_ptr<MediaConversion::IFileStream> create() override {
        if (proxy)
            return std::make_unique<IoProxyStream>(*proxy);
        return std::make_unique<MediaConversion::FileStream>();
    }

private:
    IoProxyStream::Proxy* proxy;
};

} // namespace ZetImageIo
