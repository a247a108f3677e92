// Small pictures with captions on one large one.
#pragma once

#include <opencv2/core/mat.hpp>
#include <pictures/Picture.h>

#include <string>
#include <vector>

namespace ZetTool {

/// A place on the sheet: a picture of blue, green, red bytes, or where there is none, a text that is wrapped;
/// without either it stays empty. The caption has its lines below. Characters beyond ASCII cannot be drawn,
/// and become question marks.
struct SheetTile {
    cv::Mat picture;
    std::string text;
    std::vector<std::string> caption;
};

/// Tiles that belong together, side by side. All cells of a sheet have the same number.
using SheetCell = std::vector<SheetTile>;

/// The picture in a tile's size, with its proportions kept; small ones show their pixels.
cv::Mat fitTile(const cv::Mat& picture, const PictureSize& tile);

/// How many cells in a row make a sheet of pleasant proportions.
int chooseColumns(const std::vector<SheetCell>& cells, const PictureSize& tile);

/// Blue, green, red bytes.
cv::Mat drawSheet(const std::vector<SheetCell>& cells, const PictureSize& tile, int columns);

} // namespace ZetTool
