// The version of the conversion library.
#pragma once

#include <string>

namespace MediaConversion {

struct Version {
    static int major() { return 0; }
    static int minor() { return 1; }
    static int build() { return 31; }
    static bool isBeta() { return true; }
    static std::string date() { return "2024 8 30"; }
    static std::string fingerprint() { return "e01eb24"; }
    static std::string description() { return ""; }
    /// "0.1.31 Beta"
    static std::string fullVersion() {
        return std::to_string(major()) + "." + std::to_string(minor()) + "." + std::to_string(build()) +
               (isBeta() ? " Beta" : "");
    }
};

} // namespace MediaConversion
