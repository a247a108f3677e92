// Files in memory whose streams can be made to fail.
#pragma once

#include <MediaConversion/mediafile/FileStream.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

/// What the n-th operation of a stream (open, seekg, tellg, read, write, close) does instead of its work.
struct Fault {
    enum Kind {
        Fails,      ///< nothing, and the stream says so
        Throws,     ///< throws "the cable is out"
        MovesLess,  ///< reads or writes half; `gcount` or the state say so
        LosesUnseen ///< writes half, as into a buffer; only closing shows it
    } kind = Fails;
    int operation = -1;
};

/// What streams find and leave behind.
struct MemoryFileContent {
    std::vector<std::uint8_t> bytes;
    Fault fault;
    std::vector<std::string> operations; ///< of the last stream
};

class MemoryStream final : public MediaConversion::IFileStream {
public:
    explicit MemoryStream(MemoryFileContent& file) : file(file) {}

    void clear() override { stream.clear(); }
    bool fail() const override { return stream.fail(); }
    bool good() const override { return stream.good(); }
    bool eof() const override { return stream.eof(); }
    std::streamsize gcount() const override { return stream.gcount(); }
    void read(char* data, std::streamsize count) override {
        bool const less = begin("read") && file.fault.kind == Fault::MovesLess;
        stream.read(data, less ? count / 2 : count);
    }
    void write(const char* data, std::streamsize count) override {
        bool const now = begin("write");
        if (!good())
            return;
        bool const less = now && file.fault.kind >= Fault::MovesLess;
        file.bytes.insert(file.bytes.end(), data, data + (less ? count / 2 : count));
        lost = lost || (less && file.fault.kind == Fault::LosesUnseen);
        if (less && file.fault.kind == Fault::MovesLess)
            stream.setstate(std::ios_base::badbit);
    }
    void seekg(std::streampos position) override { seekg(position, std::ios_base::beg); }
    void seekg(std::streamoff offset, std::ios_base::seekdir direction) override {
        begin("seekg");
        stream.seekg(offset, direction);
    }
    std::streampos tellg() override {
        begin("tellg");
        return stream.tellg();
    }
    void open(const char*, std::ios_base::openmode mode) override {
        if (mode & std::ios_base::trunc)
            file.bytes.clear();
        stream.str({file.bytes.begin(), file.bytes.end()});
        begin("open");
    }
    void open(std::string const&, std::ios_base::openmode mode) override { open("", mode); }
    void open(std::filesystem::path const&, std::ios_base::openmode mode) override { open("", mode); }
    bool is_open() const override { return good(); }
    void close() override {
        begin("close");
        if (lost)
            stream.setstate(std::ios_base::failbit);
    }

private:
    /// Whether this is the operation with the fault.
    bool begin(const char* operation) {
        bool const now = static_cast<int>(file.operations.size()) == file.fault.operation;
        file.operations.emplace_back(operation);
        if (now && file.fault.kind == Fault::Throws)
            throw std::ios_base::failure("the cable is out");
        if (now && file.fault.kind == Fault::Fails)
            stream.setstate(std::ios_base::badbit);
        return now;
    }

    MemoryFileContent& file;
    std::stringstream stream;
    bool lost = false;
};

class MemoryFile final : public MediaConversion::IFileStreamFactory, public MemoryFileContent {
public:
    explicit MemoryFile(std::vector<std::uint8_t> content = {}, Fault streamFault = {})
        : MemoryFileContent{std::move(content), streamFault, {}} {}
    /// Its operations are counted afresh.
    std::unique_ptr<MediaConversion::IFileStream> create() override {
        operations.clear();
        return std::make_unique<MemoryStream>(*this);
    }
};

} // namespace TestSupport
