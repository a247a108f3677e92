#include "FrameSource.h"

#include <fmt/format.h>

#include <numeric>
#include <stdexcept>

namespace fs = std::filesystem;

namespace ZetTool {
namespace {

class PictureFiles : public FrameSource {
public:
    PictureHeader header(int frame) const override { return readPictureHeader(file(frame)); }
    Picture read(int frame, const HeaderCheck& check) const override {
        return readPicture(file(frame), check);
    }
    std::string name(int frame) const override { return file(frame).string(); }
};

class Sequence final : public PictureFiles {
public:
    explicit Sequence(SequencePattern pattern) : files(std::move(pattern)) {}

    std::vector<int> frames() const override { return files.framesOnDisk(); }
    fs::path file(int frame) const override { return files.frame(frame); }

private:
    SequencePattern files;
};

class FileList final : public PictureFiles {
public:
    explicit FileList(std::map<int, fs::path> numbered) : files(std::move(numbered)) {}

    std::vector<int> frames() const override {
        std::vector<int> numbers;
        for (const auto& [number, path] : files)
            numbers.push_back(number);
        return numbers;
    }
    fs::path file(int frame) const override {
        const auto found = files.find(frame);
        if (found == files.end())
            throw std::runtime_error("none of the listed pictures has this number");
        return found->second;
    }

private:
    std::map<int, fs::path> files;
};

class ChartSource final : public FrameSource {
public:
    explicit ChartSource(const PictureSize& size) : chart(size) {}

    std::vector<int> frames() const override {
        std::vector<int> numbers(24);
        std::iota(numbers.begin(), numbers.end(), 1);
        return numbers;
    }
    std::string name(int) const override { return "chart"; }
    fs::path file(int) const override { return {}; }
    PictureHeader header(int) const override { return chart.header(); }
    Picture read(int frame, const HeaderCheck&) const override {
        return chart.draw(frame); // whose header is the same for all
    }

private:
    Chart chart;
};

} // namespace

std::map<int, fs::path> numberFiles(const std::vector<fs::path>& files) {
    std::map<int, fs::path> byName;
    std::map<int, fs::path> byPlace;
    for (const fs::path& file : files) {
        byPlace.emplace(static_cast<int>(byPlace.size()) + 1, file);
        if (const std::string digits = frameDigits(file); !digits.empty())
            byName.emplace(std::stoi(digits), file);
    }
    return byName.size() == files.size() ? byName : byPlace;
}

std::unique_ptr<FrameSource> openPictureFiles(const std::vector<std::string>& arguments) {
    std::vector<fs::path> files;
    for (const std::string& argument : arguments) {
        // A file of exactly this name is meant as it is, whatever marks its name has.
        if (std::error_code error; fs::exists(argument, error)) {
            files.emplace_back(argument);
            continue;
        }
        SequencePattern pattern{argument};
        if (!pattern.hasField())
            files.emplace_back(argument); // missing: an error of its frame
        else if (arguments.size() == 1)
            return std::make_unique<Sequence>(std::move(pattern));
        else
            throw std::runtime_error(
                fmt::format("\"{}\" is a sequence; give one sequence or a list of files", argument));
    }
    return std::make_unique<FileList>(numberFiles(files));
}

std::unique_ptr<FrameSource> openChart(const PictureSize& size) {
    return std::make_unique<ChartSource>(size);
}

} // namespace ZetTool
