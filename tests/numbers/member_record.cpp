// SPDX-License-Identifier: Apache-2.0
#include "numbers/member_record.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <vector>

namespace quorvel::test {

namespace {

constexpr std::uint32_t kOneNan = 0x7fc00000U;

std::uint32_t bitsOf(float number) {
    if (number != number) {
        return kOneNan;
    }
    std::uint32_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

std::string hex(std::uint64_t number, int digits) {
    std::string text(static_cast<std::size_t>(digits), '0');
    for (auto digit = text.rbegin(); digit != text.rend(); ++digit) {
        *digit = "0123456789abcdef"[number % 16];
        number /= 16;
    }
    return text;
}

/// 64-bit FNV-1a.
class Hash {
public:
    void add(std::uint8_t byte) { state_ = (state_ ^ byte) * 0x100000001b3ULL; }
    void add(const std::uint8_t* bytes, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            add(bytes[i]);
        }
    }
    void add(float number) {
        const std::uint32_t bits = bitsOf(number);
        for (unsigned shift = 0; shift < 32; shift += 8) {
            add(static_cast<std::uint8_t>(bits >> shift));
        }
    }
    std::uint64_t value() const { return state_; }

private:
    std::uint64_t state_ = 0xcbf29ce484222325ULL;
};

std::string text(float number) {
    return hex(bitsOf(number), 8);
}

std::string text(int number) {
    return std::to_string(number);
}

std::string text(const cv::Mat& image) {
    return imageText(image);
}

std::string text(const cv::Point& point) {
    return text(point.x) + ' ' + text(point.y);
}

std::string text(const cv::Point2f& point) {
    return text(point.x) + ' ' + text(point.y);
}

std::string text(const cv::Rect& region) {
    return text(region.tl()) + ' ' + text(region.width) + ' ' + text(region.height);
}

std::string text(const cv::Vec3f& v) {
    return text(v[0]) + ' ' + text(v[1]) + ' ' + text(v[2]);
}

template <typename Entry>
std::string text(const std::vector<Entry>& entries) {
    std::string all = text(static_cast<int>(entries.size())) + " entries";
    for (const Entry& entry : entries) {
        all += "; " + text(entry);
    }
    return all;
}

}  // namespace

std::string imageText(const cv::Mat& image) {
    Hash hash;
    for (int row = 0; row < image.rows; ++row) {
        if (image.depth() == CV_32F) {
            for (int i = 0; i < image.cols * image.channels(); ++i) {
                hash.add(image.ptr<float>(row)[i]);
            }
        } else {
            hash.add(image.ptr(row), static_cast<std::size_t>(image.cols) * image.elemSize());
        }
    }
    return "type " + text(image.type()) + ", " + text(image.cols) + " x " + text(image.rows) + ", " +
           hex(hash.value(), 16);
}

void MemberRecord::begin(const std::string& title) {
    last_.clear();
    out_ << "# " << title << '\n';
}

void MemberRecord::value(const std::string& name, const std::string& text) {
    out_ << "  " << name << ": " << text << '\n';
}

void MemberRecord::value(const std::string& name, float number) {
    value(name, text(number));
}

void MemberRecord::value(const std::string& name, int number) {
    value(name, text(number));
}

void MemberRecord::member(const std::string& name, const std::string& text) {
    std::string& last = last_[name];
    if (last != text) {
        out_ << "    " << name << " = " << text << '\n';
        last = text;
    }
}

void MemberRecord::members(const std::string& call, const Quorvel& ruler) {
    out_ << "  after " << call << '\n';
    member("colorImage", text(ruler.colorImage));
    member("depthImage", text(ruler.depthImage));
    member("colorFrameBuffer", text(ruler.colorFrameBuffer));
    member("depthFrameBuffer", text(ruler.depthFrameBuffer));
    member("result.corners", text(ruler.result.corners));
    member("result.length", text(ruler.result.length));
    member("result.width", text(ruler.result.width));
    member("result.height", text(ruler.result.height));
    member("result.inView", text(ruler.result.inView));
    member("result.onTarget", text(ruler.result.onTarget));
    member("result.sideMargin", text(ruler.result.sideMargin));
    member("calibPoints[0]", text(ruler.calibPoints[0]));
    member("calibPoints[1]", text(ruler.calibPoints[1]));
    member("calibPoints[2]", text(ruler.calibPoints[2]));
    member("pointCloud", text(ruler.pointCloud));
    member("calibFullCloud", text(ruler.calibFullCloud));
    member("pointCloudSmall", text(ruler.pointCloudSmall));
    member("colorSmall", text(ruler.colorSmall));
    member("depthSmall", text(ruler.depthSmall));
    member("pointCloudSmallCopy", text(ruler.pointCloudSmallCopy));
    member("calibCloud", text(ruler.calibCloud));
    member("pointCloudBuffer", text(ruler.pointCloudBuffer));
    member("pointCloudSmallBuffer", text(ruler.pointCloudSmallBuffer));
    member("colorSmallBuffer", text(ruler.colorSmallBuffer));
    member("depthSmallBuffer", text(ruler.depthSmallBuffer));
    member("pointCloudSmallCopyBuffer", text(ruler.pointCloudSmallCopyBuffer));
    member("refPlaneNormal", text(ruler.refPlaneNormal));
    member("refPlaneOffset", text(ruler.refPlaneOffset));
    member("calibrationRoI", text(ruler.calibrationRoI));
    member("effectiveRegion", text(ruler.effectiveRegion));
    member("cameraType", text(ruler.cameraType));
    member("cameraTypeSet", text(ruler.cameraTypeSet));
    member("fx", text(ruler.fx));
    member("fy", text(ruler.fy));
    member("invFx", text(ruler.invFx));
    member("invFy", text(ruler.invFy));
    member("cx", text(ruler.cx));
    member("cy", text(ruler.cy));
    member("fxSmall", text(ruler.fxSmall));
    member("fySmall", text(ruler.fySmall));
    member("invFxSmall", text(ruler.invFxSmall));
    member("invFySmall", text(ruler.invFySmall));
    member("cxSmall", text(ruler.cxSmall));
    member("cySmall", text(ruler.cySmall));
    member("imageWidth", text(ruler.imageWidth));
    member("imageHeight", text(ruler.imageHeight));
    member("downScale", text(ruler.downScale));
    member("minObjectHeight", text(ruler.minObjectHeight));
    member("minObjectPixels", text(ruler.minObjectPixels));
    member("productType", text(ruler.productType));
    member("calibStatus", text(ruler.calibStatus));
    member("cameraHeight", text(ruler.cameraHeight));
    member("filterWeight", text(ruler.filterWeight));
}

}  // namespace quorvel::test
