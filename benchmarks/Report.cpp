// Puts what benchmark programs wrote together: prints one table, and writes one file of all results and a bar
// chart.
//
//   benchmark_report ALL.json CHART.svg RESULTS.json...
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Json = nlohmann::ordered_json;

Json load(const std::string& file) {
    std::ifstream stream(file);
    if (!stream)
        throw std::runtime_error(file + ": cannot be opened");
    return Json::parse(stream);
}

void save(const std::string& file, const std::string& text) {
    std::ofstream stream(file);
    if (!(stream << text << std::flush))
        throw std::runtime_error(file + ": cannot be written");
}

struct Result {
    std::string name;
    double milliseconds, megapixels;
    double ratio; ///< 0: without one
};

/// Those that could be measured.
std::vector<Result> resultsOf(const Json& all) {
    std::vector<Result> results;
    for (const Json& one : all.at("benchmarks")) {
        if (!one.contains("MP/s"))
            continue;
        std::string name = one.at("name");
        for (const char* const suffix : {"/iterations:", "/manual_time"})
            name = name.substr(0, name.find(suffix));
        results.push_back({std::move(name), one.value("best_ms", one.at("real_time").get<double>()),
                           one.at("MP/s"), one.value("ratio", 0.0)});
    }
    return results;
}

void printTable(const std::vector<Result>& results) {
    std::size_t width = 0;
    for (const Result& result : results)
        width = std::max(width, result.name.size());
    fmt::print("{:<{}}  {:>9}  {:>7}  {:>6}\n", "", width, "ms", "MP/s", "ratio");
    for (const Result& result : results)
        fmt::print("{:<{}}  {:>9.2f}  {:>7.0f}  {:>6}\n", result.name, width, result.milliseconds,
                   result.megapixels, result.ratio > 0 ? fmt::format("{:.2f}", result.ratio) : "");
}

/// The bars of the chart: chains of 4K frames and peers, on one thread.
struct Bar {
    std::string label;
    double ratio;
    bool peer;
};

std::vector<Bar> barsOf(const std::vector<Result>& results) {
    constexpr std::string_view chain = "chain/", size = "/2160p/threads:1", peer = "peer/",
                               thread = "/threads:1";
    const auto between = [](const std::string& name, std::string_view begin, std::string_view end) {
        const bool fits = name.size() > begin.size() + end.size() &&
                          name.compare(0, begin.size(), begin) == 0 &&
                          name.compare(name.size() - end.size(), end.size(), end) == 0;
        return fits ? name.substr(begin.size(), name.size() - begin.size() - end.size()) : std::string();
    };
    std::vector<Bar> bars;
    for (const Result& result : results)
        if (const std::string format = between(result.name, chain, size); !format.empty())
            bars.push_back({format, result.ratio, false});
        else if (const std::string program = between(result.name, peer, thread); !program.empty())
            bars.push_back({program, result.ratio, true});
    return bars;
}

/// Bars of equal height with a line at 1, the streaming pass; what is far slower goes out at the right. The
/// colours are legible on light and dark ground, which shows through.
std::string chartOf(const std::vector<Bar>& bars) {
    constexpr int left = 160, right = 70, wide = 760, step = 24, thick = 16, top = 56, bottom = 16;
    constexpr double most = 8; // times the streaming pass
    constexpr double unit = (wide - left - right) / most;
    const int high = top + step * static_cast<int>(bars.size()) + bottom;

    std::string svg = fmt::format(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 {0} {1}\" width=\"{0}\" height=\"{1}\" "
        "font-family=\"sans-serif\" font-size=\"13\">\n"
        "<style>text {{ fill: #7d8590 }} .ours {{ fill: #2f81f7 }} .peer {{ fill: #adb5bf }} "
        ".pass {{ stroke: #e5534b; stroke-width: 1.5 }}</style>\n"
        "<text x=\"0\" y=\"16\" font-size=\"15\" font-weight=\"bold\">"
        "A 3840x2160 float frame on one thread</text>\n"
        "<text x=\"0\" y=\"36\">times as long as a pass that reads and writes the same bytes (red "
        "line)</text>\n",
        wide, high);
    int y = top;
    for (const Bar& bar : bars) {
        const double length = std::min(bar.ratio, most) * unit;
        svg += fmt::format("<text x=\"{}\" y=\"{}\" text-anchor=\"end\">{}</text>"
                           "<rect class=\"{}\" x=\"{}\" y=\"{}\" width=\"{:.1f}\" height=\"{}\" rx=\"2\"/>"
                           "<text x=\"{:.1f}\" y=\"{}\">{}{:.1f}</text>\n",
                           left - 8, y + 13, bar.label, bar.peer ? "peer" : "ours", left, y, length, thick,
                           left + length + 6, y + 13, bar.ratio > most ? "\u2192 " : "", bar.ratio);
        y += step;
    }
    return svg +
           fmt::format("<line class=\"pass\" x1=\"{0:.1f}\" y1=\"{1}\" x2=\"{0:.1f}\" y2=\"{2}\"/>\n</svg>\n",
                       left + unit, top - 6, y);
}

void report(const std::vector<std::string>& arguments) {
    if (arguments.size() < 3)
        throw std::runtime_error("expected ALL.json CHART.svg RESULTS.json...");
    Json all = load(arguments[2]);
    for (auto file = arguments.begin() + 3; file != arguments.end(); ++file) {
        const Json more = load(*file);
        for (const Json& one : more.at("benchmarks"))
            all["benchmarks"].push_back(one);
    }
    save(arguments[0], all.dump(2));
    const std::vector<Result> results = resultsOf(all);
    printTable(results);
    save(arguments[1], chartOf(barsOf(results)));
}

} // namespace

int main(int argc, char** argv) {
    try {
        report({argv + 1, argv + argc});
        return 0;
    } catch (const std::exception& error) {
        fmt::print(stderr, "benchmark_report: {}\n", error.what());
        return 1;
    }
}
