#include "WriteManifest.h"

#include "Parallel.h"

#include <fmt/format.h>

#include <stdexcept>
#include <vector>

namespace fs = std::filesystem;

namespace ZetTool {

WriteManifest::WriteManifest(fs::path path, const WritePlan& toDo) : file(std::move(path)), plan(toDo) {
    if (plan.target.path().filename().string().find_first_of("\r\n") != std::string::npos)
        throw std::runtime_error("a file name with a line break cannot stand in a manifest");
    if (std::error_code error; fs::exists(file, error))
        manifest = Manifest::load(file);
    for (const int frame : plan.frames)
        manifest.sums.erase(nameOf(frame));
    manifest.save(file);
}

void WriteManifest::finish(const RunResult& result, unsigned jobs, const std::atomic<bool>& stop) {
    for (const auto& [frame, sum] : result.sums)
        manifest.sums[nameOf(frame)] = sum;
    manifest.save(file); // first what is known, whatever happens next
    sumWholeFiles(jobs, stop);
    manifest.save(file);
}

std::string WriteManifest::nameOf(int frame) const { return plan.target.frame(frame).filename().string(); }

void WriteManifest::sumWholeFiles(unsigned jobs, const std::atomic<bool>& stop) {
    std::vector<int> unlisted;
    for (const int frame : plan.whole) {
        const auto listed = manifest.sums.find(nameOf(frame));
        // An entry of another length is of an older file of this name.
        if (listed == manifest.sums.end() || listed->second.bytes != plan.shape->bytes())
            unlisted.push_back(frame);
    }
    std::vector<FileSum> sums(unlisted.size());
    std::vector<std::string> failures(unlisted.size());
    forEachIndex(unlisted.size(), jobs, [&](std::size_t i) {
        try {
            if (!stop)
                sums[i] = sumFile(plan.target.frame(unlisted[i]));
        } catch (const std::exception& error) {
            failures[i] = error.what();
        }
    });
    for (std::size_t i = 0; i < unlisted.size(); ++i) {
        const std::string name = nameOf(unlisted[i]);
        if (!failures[i].empty())
            throw std::runtime_error(fmt::format("{}: {}", name, failures[i]));
        if (!sums[i].checksum.empty())
            manifest.sums[name] = sums[i];
    }
}

} // namespace ZetTool
