// The colour transforms of single pixels. The operations stand in the order in which they are to be
// performed: the results are the same to the last bit everywhere, as long as no multiplication is fused with
// an addition.
#pragma once

namespace MediaConversion {

/// The luma of ITU-T T.871, on samples of 0..1; neither rounds nor clamps. `Real` is double, or a vector of
/// numbers.
template <class Real>
void BgrToY(Real b, Real g, Real r, Real& y) {
    y = (0.299 * r + 0.587 * g) + 0.114 * b;
}

/// Full-range YCbCr of ITU-T T.871 on samples of 0..1, u being Cb and v Cr, both centred on 0.5; neither
/// rounds nor clamps. For samples of another range `half` is the middle of it.
template <class Real>
void BgrToYuv(Real b, Real g, Real r, Real& y, Real& u, Real& v, Real half = 0.5) {
    BgrToY<Real>(b, g, r, y);
    u = ((0.5 * b - 0.168736 * r) - 0.331264 * g) + half;
    v = ((0.5 * r - 0.418688 * g) - 0.081312 * b) + half;
}

inline void BgrToY(double b, double g, double r, double& y) { BgrToY<double>(b, g, r, y); }
inline void BgrToYuv(double b, double g, double r, double& y, double& u, double& v) {
    BgrToYuv<double>(b, g, r, y, u, v);
}

/// The inverse of `BgrToYuv`; results may leave 0..1.
template <class Real>
void YuvToBgr(Real y, Real u, Real v, Real& b, Real& g, Real& r) {
    b = y + 1.772 * (u - 0.5);
    g = (y - 0.34414 * (u - 0.5)) - 0.71414 * (v - 0.5);
    r = y + 1.402 * (v - 0.5);
}
inline void YuvToBgr(double y, double u, double v, double& b, double& g, double& r) {
    YuvToBgr<double>(y, u, v, b, g, r);
}

/// Integer YCoCg, rounded half up (towards plus infinity). 8-bit samples give y in 0..255, co and cg in
/// -127..128. `Int` is int, or a vector of integers.
template <class Int>
void RgbToYCoCg(Int r, Int g, Int b, Int& y, Int& co, Int& cg) {
    static_assert(-5 >> 1 == -3, "shifts of negative numbers must round down");
    Int const redAndBlue = r + b, green = g + g + 2;
    y = (green + redAndBlue) >> 2;
    co = (r - b + 1) >> 1;
    cg = (green - redAndBlue) >> 2;
}

/// The inverse of the unrounded transform; results may leave the range of the samples.
template <class Int>
void YCoCgToRgb(Int y, Int co, Int cg, Int& r, Int& g, Int& b) {
    r = y + co - cg;
    g = y + cg;
    b = y - co - cg;
}

} // namespace MediaConversion
