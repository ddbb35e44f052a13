// SPDX-License-Identifier: Apache-2.0
#include "sim/grain.h"

#include <cmath>

namespace quorvel::sim {

namespace {

/// Mixes the bits of a word so that neighbouring inputs give unrelated outputs: two rounds of xor, shift and multiply.
/// The multipliers are odd, so different inputs give different outputs.
std::uint32_t mixBits(std::uint32_t value) {
    value ^= value >> 16U;
    value *= 0x7FEB352DU;
    value ^= value >> 15U;
    value *= 0x846CA68BU;
    value ^= value >> 16U;
    return value;
}

/// Greatest integer not above the value. Every pixel needs several; std::floor costs a library call each.
std::int64_t floorOf(double value) {
    const auto truncated = static_cast<std::int64_t>(value);
    return static_cast<double>(truncated) > value ? truncated - 1 : truncated;
}

/// smoothStep() of a value that lies in 0 ... 1 already.
double fade(double t) {
    return t * t * (3.0 - 2.0 * t);
}

double lerp(double from, double to, double share) {
    return from + (to - from) * share;
}

}  // namespace

double hashNoise(std::int64_t x, std::int64_t y, std::uint32_t salt) {
    const std::uint32_t key = static_cast<std::uint32_t>(x) * 0x9E3779B1U + static_cast<std::uint32_t>(y) * 0x85EBCA77U;
    return mixBits(key + salt * 0xC2B2AE3DU) / 4294967296.0;
}

double valueNoise(double x, double y, std::uint32_t salt) {
    const std::int64_t column = floorOf(x);
    const std::int64_t row = floorOf(y);
    const double across = fade(x - static_cast<double>(column));
    const double above = lerp(hashNoise(column, row, salt), hashNoise(column + 1, row, salt), across);
    const double below = lerp(hashNoise(column, row + 1, salt), hashNoise(column + 1, row + 1, salt), across);
    return lerp(above, below, fade(y - static_cast<double>(row)));
}

cv::Vec3d boardColor(double x, double y) {
    constexpr double kBoardWidth = 140.0;  // mm
    constexpr double kSeam = 1.8;          // mm, half the width of the dark line between two boards
    const cv::Vec3d light(0.62, 0.76, 0.85);
    const cv::Vec3d dark(0.43, 0.58, 0.70);

    const std::int64_t board = floorOf(y / kBoardWidth);
    const double along = x + 4000.0 * hashNoise(board, 0, 11U);
    const double across = y - static_cast<double>(board) * kBoardWidth;
    const double tint = 0.94 + 0.1 * hashNoise(board, 1, 12U);

    // Year rings are bands across the board, bent by slow noise; fibres are noise drawn out along the board.
    const double ring = across / 17.0 + 2.6 * valueNoise(along / 330.0, across / 70.0, 13U);
    const double wave = std::abs(2.0 * (ring - static_cast<double>(floorOf(ring))) - 1.0);
    const double fibre = valueNoise(along / 70.0, across / 2.4, 14U);
    const double grain = 0.45 * smoothStep(0.45, 1.0, wave) + 0.4 * fibre;

    const double toSeam = std::min(across, kBoardWidth - across);
    const double seam = 0.62 + 0.38 * smoothStep(0.0, kSeam, toSeam);
    return (light + (dark - light) * grain) * (tint * seam);
}

cv::Vec3d cardboardColor(const cv::Vec3d& base, double x, double y, std::uint32_t salt) {
    const double cloud = valueNoise(x / 45.0, y / 30.0, salt);
    const double fibre = valueNoise(x / 9.0, y / 2.2, salt + 1U);
    return base * (0.95 + 0.06 * cloud + 0.05 * fibre);
}

}  // namespace quorvel::sim
