#include "ContactSheet.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <sstream>

namespace ZetTool {
namespace {

const cv::Scalar background(38, 36, 36);
const cv::Scalar tileGround(22, 20, 20);
const cv::Scalar firstLine(245, 245, 245); // of a caption
const cv::Scalar otherLines(180, 178, 178);

constexpr int face = cv::FONT_HERSHEY_SIMPLEX;

/// Sizes in pixels that follow from that of a tile.
struct Look {
    explicit Look(const PictureSize& size, const std::vector<SheetCell>& cells)
        : tile(size),
          fontScale(std::clamp(size.width / 320.0 * 0.42, 0.36, 1.2)),
          lineHeight(static_cast<int>(std::ceil(fontScale * 40))),
          gap(lineHeight / 2),
          margin(lineHeight) {
        for (const SheetCell& cell : cells) {
            tiles = std::max(tiles, static_cast<int>(cell.size()));
            for (const SheetTile& place : cell)
                lines = std::max(lines, static_cast<int>(place.caption.size()));
        }
    }

    int cellWidth() const { return tiles * (tile.width + gap) - gap; }
    int cellHeight() const { return tile.height + lines * lineHeight + gap; }
    int sheetWidth(int columns) const { return columns * (cellWidth() + margin) + margin; }
    int sheetHeight(int rows) const { return rows * (cellHeight() + margin) + margin; }

    PictureSize tile;
    double fontScale;
    int lineHeight;
    int gap;
    int margin;
    int tiles = 1; // in a cell
    int lines = 0; // in a caption
};

int rowsFor(std::size_t cells, int columns) { return (static_cast<int>(cells) + columns - 1) / columns; }

int textWidth(const std::string& text, double scale) {
    return cv::getTextSize(text, face, scale, 1, nullptr).width;
}

/// One question mark for each character that the face does not have.
std::string drawable(const std::string& text) {
    std::string plain;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte >= 0x20 && byte < 0x7F)
            plain += character;
        else if ((byte & 0xC0) != 0x80) // not the continuation of a character
            plain += '?';
    }
    return plain;
}

/// Without its middle where that is needed: names differ at their ends.
std::string shortened(std::string text, int width, double scale) {
    if (textWidth(text, scale) <= width)
        return text;
    for (std::size_t kept = text.size(); kept > 0; --kept) {
        const std::string shorter =
            text.substr(0, kept / 2) + "..." + text.substr(text.size() - (kept - kept / 2));
        if (textWidth(shorter, scale) <= width)
            return shorter;
    }
    return {};
}

std::vector<std::string> wrapped(const std::string& text, int width, double scale) {
    std::vector<std::string> lines{""};
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const std::string longer = lines.back().empty() ? word : lines.back() + " " + word;
        if (lines.back().empty() || textWidth(longer, scale) <= width)
            lines.back() = longer;
        else
            lines.push_back(word);
    }
    return lines;
}

/// A line below `top`. Somewhat too long ones are drawn smaller, longer ones are shortened.
void drawLine(cv::Mat& sheet, const std::string& line, cv::Point top, int width, const Look& look,
              const cv::Scalar& colour) {
    constexpr double smallest = 0.85;
    const std::string plain = drawable(line);
    const double fitting = static_cast<double>(width) / std::max(1, textWidth(plain, look.fontScale));
    const double scale = look.fontScale * std::clamp(fitting, smallest, 1.0);
    const cv::Point baseline(top.x, top.y + static_cast<int>(0.8 * look.lineHeight));
    const int thickness = look.fontScale > 0.8 ? 2 : 1;
    cv::putText(sheet, shortened(plain, width, scale), baseline, face, scale, colour, thickness, cv::LINE_AA);
}

void drawText(cv::Mat& sheet, const std::string& text, const cv::Rect& area, const Look& look) {
    const int width = area.width - 2 * look.gap;
    cv::Point place(area.x + look.gap, area.y + look.gap);
    for (const std::string& line : wrapped(drawable(text), width, look.fontScale)) {
        if (place.y + look.lineHeight > area.y + area.height)
            return;
        drawLine(sheet, line, place, width, look, otherLines);
        place.y += look.lineHeight;
    }
}

void drawTile(cv::Mat& sheet, const SheetTile& tile, cv::Point place, const Look& look) {
    const cv::Rect area(place, cv::Size(look.tile.width, look.tile.height));
    if (!tile.picture.empty() || !tile.text.empty())
        sheet(area).setTo(tileGround);
    if (tile.picture.empty()) {
        drawText(sheet, tile.text, area, look);
    } else {
        const cv::Mat fitted = fitTile(tile.picture, look.tile);
        const cv::Point corner(place.x + (area.width - fitted.cols) / 2,
                               place.y + (area.height - fitted.rows) / 2);
        fitted.copyTo(sheet(cv::Rect(corner, fitted.size())));
    }
    place.y += area.height + look.lineHeight / 4;
    for (const std::string& line : tile.caption) {
        drawLine(sheet, line, place, area.width, look, &line == &tile.caption[0] ? firstLine : otherLines);
        place.y += look.lineHeight;
    }
}

} // namespace

cv::Mat fitTile(const cv::Mat& picture, const PictureSize& tile) {
    const double scale = std::min(static_cast<double>(tile.width) / picture.cols,
                                  static_cast<double>(tile.height) / picture.rows);
    const auto side = [&](int pixels, int most) {
        return std::clamp(static_cast<int>(std::lround(pixels * scale)), 1, most);
    };
    cv::Mat fitted;
    cv::resize(picture, fitted, {side(picture.cols, tile.width), side(picture.rows, tile.height)}, 0, 0,
               scale < 1 ? cv::INTER_AREA : cv::INTER_NEAREST);
    return fitted;
}

int chooseColumns(const std::vector<SheetCell>& cells, const PictureSize& tile) {
    constexpr double pleasant = 1.4; // width to height
    const Look look(tile, cells);
    const auto flaw = [&](int columns) {
        const int rows = rowsFor(cells.size(), columns);
        const double shape = static_cast<double>(look.sheetWidth(columns)) / look.sheetHeight(rows);
        const double unused = rows * columns / static_cast<double>(cells.size()) - 1;
        return std::abs(std::log(shape / pleasant)) + unused;
    };
    int best = 1;
    for (int columns = 2; columns <= static_cast<int>(cells.size()); ++columns)
        if (flaw(columns) < flaw(best))
            best = columns;
    return best;
}

cv::Mat drawSheet(const std::vector<SheetCell>& cells, const PictureSize& tile, int columns) {
    const Look look(tile, cells);
    cv::Mat sheet(look.sheetHeight(rowsFor(cells.size(), columns)), look.sheetWidth(columns), CV_8UC3,
                  background);
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const int row = static_cast<int>(i) / columns, column = static_cast<int>(i) % columns;
        cv::Point place(look.margin + column * (look.cellWidth() + look.margin),
                        look.margin + row * (look.cellHeight() + look.margin));
        for (const SheetTile& next : cells[i]) {
            drawTile(sheet, next, place, look);
            place.x += tile.width + look.gap;
        }
    }
    return sheet;
}

} // namespace ZetTool
