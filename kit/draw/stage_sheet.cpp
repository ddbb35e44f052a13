// SPDX-License-Identifier: Apache-2.0
#include "kit/draw/stage_sheet.h"

#include <algorithm>

#include <opencv2/imgproc.hpp>

#include "kit/account/text_format.h"
#include "kit/draw/drawing.h"
#include "kit/draw/overlay.h"

namespace quorvel::kit {

namespace {

constexpr int kMinWidth = 640;
constexpr int kMargin = 14;
constexpr double kTitleHeight = 14.0;
constexpr double kSheetTextHeight = 9.0;
constexpr int kLineHeight = 18;
constexpr int kBarColumn = 104;  // room for bar, ticks and unit
constexpr int kBarWidth = 16;

const cv::Scalar kPaper(38, 34, 31);
const cv::Scalar kSheetInk(245, 245, 245);
const cv::Scalar kFaintInk(190, 190, 190);

cv::Mat enlarged(const cv::Mat& picture) {
    const int factor = (kMinWidth + picture.cols - 1) / picture.cols;
    cv::Mat large;
    cv::resize(picture, large, {}, factor, factor, cv::INTER_NEAREST);
    return large;
}

void drawBar(cv::Mat& sheet, const cv::Rect& bar, const ColorScale& scale, const std::string& unit) {
    const std::vector<double> ticks = scale.ticks();
    const double bottom = bar.y + bar.height - 1;
    for (int row = 0; row < bar.height; ++row) {
        const double share = 1.0 - static_cast<double>(row) / (bar.height - 1);
        const cv::Vec3b color = scale.colorAt(share);
        sheet(cv::Rect(bar.x, bar.y + row, bar.width, 1)).setTo(cv::Scalar(color[0], color[1], color[2]));
    }
    for (const double tick : ticks) {
        const int y = cvRound(bottom - scale.position(tick) * (bar.height - 1));
        cv::line(sheet, {bar.x + bar.width, y}, {bar.x + bar.width + 4, y}, kFaintInk, 1, cv::LINE_AA);
        const bool whole = ticks.size() < 2 || ticks[1] - ticks[0] >= 1.0;
        const int textTop =
            std::clamp(y - cvRound(kSheetTextHeight / 2.0) - 1, bar.y, cvRound(bottom - kSheetTextHeight) - 2);
        drawText(sheet, fixed(tick, whole ? 0 : 1), {bar.x + bar.width + 7, textTop}, kSheetTextHeight, kSheetInk);
    }
    drawText(sheet, unit, {bar.x, bar.y - kLineHeight}, kSheetTextHeight, kFaintInk);
}

}  // namespace

cv::Mat makeSheet(const cv::Mat& picture, const SheetText& text, const std::optional<ColorScale>& scale) {
    const cv::Mat content = enlarged(picture);
    const int width = content.cols + 2 * kMargin + (scale ? kBarColumn : 0);
    const auto caption = wrapText(text.caption, width - 2 * kMargin, kSheetTextHeight);
    const int header = kMargin + cvRound(kTitleHeight * 1.9) + static_cast<int>(caption.size()) * kLineHeight + 4;
    cv::Mat sheet(content.rows + header + kMargin, width, CV_8UC3, kPaper);
    drawText(sheet, text.title, {kMargin, kMargin}, kTitleHeight, kSheetInk);
    for (std::size_t i = 0; i < caption.size(); ++i) {
        const int top = kMargin + cvRound(kTitleHeight * 1.9) + static_cast<int>(i) * kLineHeight;
        drawText(sheet, caption[i], {kMargin, top}, kSheetTextHeight, kFaintInk);
    }
    content.copyTo(sheet(cv::Rect({kMargin, header}, content.size())));
    if (scale) {
        const cv::Rect bar(content.cols + 2 * kMargin, header + kLineHeight, kBarWidth, content.rows - kLineHeight);
        drawBar(sheet, bar, *scale, text.unit);
    }
    return sheet;
}

}  // namespace quorvel::kit
