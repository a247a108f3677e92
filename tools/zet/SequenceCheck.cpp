#include "SequenceCheck.h"

#include "FrameRange.h"
#include "Parallel.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <numeric>
#include <set>
#include <stdexcept>

namespace fs = std::filesystem;

namespace ZetTool {
namespace {

SequencePattern parsePattern(const std::string& text) {
    SequencePattern pattern{text};
    if (!pattern.hasField())
        throw std::runtime_error(fmt::format("\"{}\" has no place for the frame number, such as "
                                             "\"shot.%04d.zet\"; \"zet info\" looks at single files",
                                             text));
    return pattern;
}

[[noreturn]] void refuseContradiction(const std::vector<std::string>& manifests, const std::string& name) {
    std::string places;
    for (const std::string& file : manifests)
        if (const auto sums = Manifest::load(file).sums; sums.count(name) > 0)
            places += fmt::format("\n  {} in \"{}\"", sums.at(name).checksum, file);
    throw std::runtime_error(
        fmt::format("the manifests contradict each other: \"{}\" is listed as{}", name, places));
}

Manifest loadAll(const std::vector<std::string>& files) {
    Manifest all;
    for (const std::string& file : files) {
        const Manifest manifest = Manifest::load(file);
        if (manifest.isCut)
            throw std::runtime_error(fmt::format("manifest \"{}\" ends within a line: it was cut, or its run "
                                                 "was killed; \"zet write --resume\" with it completes both",
                                                 file));
        for (const auto& [name, sum] : manifest.sums)
            if (!(all.sums.emplace(name, sum).first->second == sum))
                refuseContradiction(files, name);
    }
    return all;
}

/// All from the first to the last that is there or listed.
std::vector<int> wholeSpan(const SequencePattern& pattern, const std::vector<int>& onDisk,
                           const Manifest& manifest) {
    std::set<int> known(onDisk.begin(), onDisk.end());
    for (const auto& [name, sum] : manifest.sums)
        if (const auto frame = pattern.numberOf(name))
            known.insert(*frame);
    if (known.empty())
        throw std::runtime_error(fmt::format("no file matches \"{}\"", pattern.path().string()));
    const long count = static_cast<long>(*known.rbegin()) - *known.begin() + 1;
    if (count > maxFrames)
        throw std::runtime_error(
            fmt::format("frames {} to {} are more than {}; tell with --frames which ones there should be",
                        *known.begin(), *known.rbegin(), maxFrames));
    std::vector<int> frames(static_cast<std::size_t>(count));
    std::iota(frames.begin(), frames.end(), *known.begin());
    return frames;
}

} // namespace

SequenceCheck::SequenceCheck(const CheckRequest& what)
    : request(what), pattern(parsePattern(what.pattern)), manifest(loadAll(what.manifests)) {
    const std::vector<int> onDisk = pattern.framesOnDisk();
    result.frames = request.frames ? parseFrameRange(*request.frames) : wholeSpan(pattern, onDisk, manifest);
    std::sort(result.frames.begin(), result.frames.end());
    sortOut(onDisk);
}

CheckResult SequenceCheck::run(Progress& progress) {
    forEachIndex(seen.size(), request.jobs, [&](std::size_t index) {
        Seen& one = seen[index];
        one.file = inspect(pattern.frame(one.frame));
        if (one.file.info && !request.manifests.empty())
            one.contentFault = manifest.faultOf(one.file.path);
        progress.written(one.file.info ? one.file.info->fileBytes : 0);
    });
    result.files = seen.size();
    result.look = commonLook();
    for (const Seen& one : seen)
        judge(one);
    std::stable_sort(result.faults.begin(), result.faults.end(),
                     [](const Fault& one, const Fault& other) { return one.frame < other.frame; });
    return std::move(result);
}

void SequenceCheck::fault(int frame, std::string text) {
    result.faults.push_back({frame, pattern.frame(frame), std::move(text)});
}

/// Into files to look at, missing ones and those that are too many.
void SequenceCheck::sortOut(const std::vector<int>& onDisk) {
    const std::vector<int>& expected = result.frames;
    std::vector<int> missing, extra, there;
    std::set_difference(expected.begin(), expected.end(), onDisk.begin(), onDisk.end(),
                        std::back_inserter(missing));
    std::set_difference(onDisk.begin(), onDisk.end(), expected.begin(), expected.end(),
                        std::back_inserter(extra));
    std::set_intersection(expected.begin(), expected.end(), onDisk.begin(), onDisk.end(),
                          std::back_inserter(there));
    for (const int frame : missing)
        fault(frame, "missing");
    for (const int frame : extra)
        fault(frame, "not one of the expected frames");
    for (const int frame : there)
        seen.push_back({frame, {}, {}});
}

/// What most of the files say of themselves.
std::optional<MediaFileInfo> SequenceCheck::commonLook() const {
    std::map<MediaFileLook, std::size_t> counts;
    std::optional<MediaFileInfo> common;
    std::size_t most = 0;
    for (const Seen& one : seen) {
        if (!one.file.info)
            continue;
        const std::size_t count = ++counts[lookOf(*one.file.info)];
        if (count > most) {
            most = count;
            common = one.file.info;
        }
    }
    return common;
}

void SequenceCheck::judge(const Seen& one) {
    if (!one.file.info)
        return fault(one.frame, one.file.fault);
    const MediaFileInfo& info = *one.file.info;
    const auto compare = [&](const char* what, const std::string& is, const std::string& shouldBe,
                             bool asked) {
        if (is != shouldBe)
            fault(one.frame, fmt::format("{} is {}, {} {}", what, is,
                                         asked ? "expected" : "that of most files is", shouldBe));
    };
    compare("format", formatText(info), request.format ? request.format->label : formatText(*result.look),
            request.format);
    compare("size", sizeOf(info).text(), request.size.value_or(sizeOf(*result.look)).text(),
            request.size.has_value());
    compare("version", versionText(info), versionText(*result.look), false);
    if (!one.contentFault.empty())
        fault(one.frame, one.contentFault);
    result.bytes += info.fileBytes;
}

} // namespace ZetTool
