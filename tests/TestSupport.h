// What tests of several areas need.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include <cstdint>
#include <cstdlib>

namespace TestSupport {

using Bytes = std::vector<std::uint8_t>;

/// The text of the `Exception` that `action` throws; fails the test when it throws none or another.
template <class Exception = std::runtime_error, class Action>
std::string messageOf(Action&& action) {
    try {
        action();
    } catch (Exception const& exception) {
        return exception.what();
    } catch (std::exception const& exception) {
        ADD_FAILURE() << "threw an exception of another type: " << exception.what();
        return {};
    }
    ADD_FAILURE() << "threw nothing";
    return {};
}

/// A folder of the running test's own, removed at its end.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "zetwriter-test-XXXXXX").string();
        if (!mkdtemp(pattern.data()))
            throw std::runtime_error("cannot make a folder like " + pattern);
        folder = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    std::filesystem::path operator/(std::string const& name) const { return folder / name; }
    std::filesystem::path const& path() const { return folder; }

private:
    std::filesystem::path folder;
};

inline Bytes bytesOf(std::filesystem::path const& file) {
    std::ifstream stream(file, std::ios::binary);
    EXPECT_TRUE(stream.is_open()) << file;
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// All that is in the folder, hidden files included.
inline std::set<std::string> namesIn(std::filesystem::path const& folder) {
    std::set<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(folder))
        names.insert(entry.path().filename().string());
    return names;
}

} // namespace TestSupport
