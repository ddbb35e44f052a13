// SPDX-License-Identifier: Apache-2.0
// Measures the object in one colour and depth pair after calibrating on a pair of the empty surface.
//   host EMPTY_COLOR EMPTY_DEPTH COLOR DEPTH
// The pictures must be 640 x 480; the intrinsics below are those of the simulator's presets.
#include <cstdlib>
#include <iostream>

#include <opencv2/imgcodecs.hpp>

#include <quorvel/quorvel.h>

int main(int count, char** arguments) {
    if (count != 5) {
        std::cerr << "usage: host EMPTY_COLOR EMPTY_DEPTH COLOR DEPTH\n";
        return EXIT_FAILURE;
    }
    const auto read = [arguments](int i) { return cv::imread(arguments[i], cv::IMREAD_UNCHANGED); };

    Quorvel ruler(600.0F, 600.0F, 320.0F, 240.0F, 640, 480, false, "");
    cv::Rect area;
    ruler.setProductType(GROUND_GROWING);
    ruler.setCalibrationRoI(0.8F, area);
    ruler.setEffectiveRegionInArea(0.5F, area);
    float planeDistance = 0.0F;
    ruler.getCameraFrame(read(1), read(2));
    ruler.calibRef(planeDistance, 0.0F);
    ruler.getCameraFrame(read(3), read(4));
    if (ruler.measureOnce() != 0 || ruler.result.corners.empty() || !ruler.result.inView) {
        std::cerr << "nothing measured\n";
        return EXIT_FAILURE;
    }
    std::cout << ruler.result.length << " x " << ruler.result.width << " x " << ruler.result.height << " mm\n";
    return EXIT_SUCCESS;
}
