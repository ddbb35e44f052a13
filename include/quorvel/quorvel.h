// SPDX-License-Identifier: Apache-2.0
#pragma once

/// \file quorvel.h
/// The whole public interface of Quorvel: a depth camera that looks down on a flat surface becomes a ruler.
///
/// Units: millimetres for every 3-D value and size, pixels for image positions and intrinsics.
/// Camera coordinates: x to the right, y down, z along the optical axis, origin in the camera.
/// W and H stand for Quorvel::imageWidth and Quorvel::imageHeight, "small" for an image of
/// (W / downScale) x (H / downScale) pixels (integer division).
///
/// A Quorvel is used from one thread at a time; different objects are independent of one another except
/// through the files they share in the working directory.

#include <cstdint>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include <quorvel/version.h>

#if defined(QUORVEL_STATIC)
#define QUORVEL_API
#elif defined(_WIN32)
#if defined(QUORVEL_BUILDING_LIBRARY)
#define QUORVEL_API __declspec(dllexport)
#else
#define QUORVEL_API __declspec(dllimport)
#endif
#else
#define QUORVEL_API __attribute__((visibility("default")))
#endif

/// Operating mode: where the reference plane comes from and how an object is measured.
enum ProductType : std::int32_t {
    /// Fixed camera: the plane is fitted once by a robust random-sampling fit and kept in the calibration file.
    KIOSK = 0,
    /// The plane is fitted anew on every frame; the measured height is lowered by a distance-dependent amount.
    GROUND_TRACKING = 1,
    /// Fixed camera: the plane is fitted once by least squares, region growing and least squares again.
    GROUND_GROWING = 2,
    /// Loads the stored plane and a filter weight of 0.005; Quorvel::measureOnce measures nothing in this mode.
    KIOSK_LOW_OBJECT = 3
};

/// What one measurement found. Read `corners` and `inView` first: without corners nothing was measured, and
/// when `inView` is false the three sizes are 0. GROUND_TRACKING lowers the height also in these two cases; it is then
/// between -8 and -1 mm.
struct MeasureResult {
    /// Image positions of the box, full-size pixels: entries 0-3 the ground corners, entries 4-7 the top
    /// corners, corner k of the ground below corner k + 4 of the top. Eight entries, or empty.
    std::vector<cv::Point2f> corners;
    /// Longer side of the footprint, mm.
    float length = 0.0F;
    /// Shorter side of the footprint, mm.
    float width = 0.0F;
    /// Height of the object above the reference plane, mm.
    float height = 0.0F;
    /// Every corner lies inside the usable image area.
    bool inView = false;
    /// The top face of the box overlaps Quorvel::effectiveRegion (never set in GROUND_GROWING).
    bool onTarget = false;
    /// Width of the band at the left and right image edge that counts as outside, pixels; 0 when not used.
    float sideMargin = 0.0F;
};

/// The ruler: takes frames of one depth camera, learns the reference plane and measures the object on it.
///
/// All data members are public and are the way results are read; their order is part of the interface.
/// Copying shares the pixel data of images (as cv::Mat does) and copies everything else.
class Quorvel {
public:
    // Frames

    /// Last colour frame, CV_8UC3, H x W. Written by getCameraFrame(), getCameraMultipleFrame() (a clone of the
    /// batch's first frame), measureMultiple() (the batch's last frame, which shares the host's pixels) and the
    /// offline start. Initially empty.
    cv::Mat colorImage;
    /// Last depth frame, CV_16UC1, H x W, mm, 0 = no measurement. Written as `colorImage`. Initially empty.
    cv::Mat depthImage;
    /// Third image of the three-image getCameraFrame(), any type and size. Initially empty.
    cv::Mat auxImage;
    /// Colour frames of a batch, CV_8UC3, H x W; they share the host's pixels. This buffer and the others of a
    /// batch are written by getCameraMultipleFrame() and emptied by measureMultiple(). Initially empty.
    std::vector<cv::Mat> colorFrameBuffer;
    /// Depth frames of a batch, CV_16UC1, H x W, mm; they share the host's pixels. Initially empty.
    std::vector<cv::Mat> depthFrameBuffer;

    // Results and derived images

    /// Result of the last measurement. Reset and written by measureOnce() and measureMultiple(). Initially empty and
    /// zero.
    MeasureResult result;
    /// Corners of `calibrationRoI` as the last calibration used them: top left, bottom left, top right, pixels.
    /// Written by calibRef(). Initially (0, 0) each.
    cv::Point calibPoints[3];
    /// 3-D point of every pixel of `depthImage`, CV_32FC3, H x W, mm; (0, 0, 0) where there is no depth.
    /// Written by getCameraFrame(); measureOnce() leaves only the points of the measured object. Initially
    /// empty.
    cv::Mat pointCloud;
    /// Point cloud of the smoothed depth frame, CV_32FC3, H x W, mm. Written by calibRef(). Initially empty.
    cv::Mat calibFullCloud;
    /// 3-D point of every pixel of `depthSmall`, CV_32FC3, small, mm. Written by getCameraFrame(). Initially
    /// empty.
    cv::Mat pointCloudSmall;
    /// `colorImage` scaled down, CV_8UC3, small. Written by getCameraFrame(). Initially empty.
    cv::Mat colorSmall;
    /// `depthImage` scaled down, CV_16UC1, small, mm. Written by getCameraFrame(); measureOnce() sets pixels
    /// that belong to no object to 0. Initially empty.
    cv::Mat depthSmall;
    /// Spare image, used by no operation. Initially empty.
    cv::Mat calibImage;
    /// Deep copy of `pointCloudSmall`, CV_32FC3, small, mm: what the height cut reads. Written by
    /// getCameraFrame(). Initially empty.
    cv::Mat pointCloudSmallCopy;
    /// `calibFullCloud` restricted to the inside of `calibrationRoI`, CV_32FC3, H x W, mm. Written by
    /// calibRef(). Initially empty.
    cv::Mat calibCloud;

    // Batch buffers and spare images

    /// Full-size point clouds of a batch, CV_32FC3, H x W, mm. Initially empty.
    std::vector<cv::Mat> pointCloudBuffer;
    /// Spare buffer, filled by no operation. Initially empty.
    std::vector<cv::Mat> spareBuffer1;
    /// Small point clouds of a batch, CV_32FC3, small, mm. Initially empty.
    std::vector<cv::Mat> pointCloudSmallBuffer;
    /// Small colour images of a batch, CV_8UC3, small. Initially empty.
    std::vector<cv::Mat> colorSmallBuffer;
    /// Small depth images of a batch, CV_16UC1, small, mm. Initially empty.
    std::vector<cv::Mat> depthSmallBuffer;
    /// Spare buffer, filled by no operation. Initially empty.
    std::vector<cv::Mat> spareBuffer2;
    /// Deep copies of the small point clouds of a batch, CV_32FC3, small, mm. Initially empty.
    std::vector<cv::Mat> pointCloudSmallCopyBuffer;
    /// Spare buffer, filled by no operation. Initially empty.
    std::vector<cv::Mat> spareBuffer3;
    /// Spare image, used by no operation. Initially empty.
    cv::Mat spareImage1;
    /// Spare image, used by no operation. Initially empty.
    cv::Mat spareImage2;
    /// Spare image, used by no operation. Initially empty.
    cv::Mat spareImage3;
    /// Spare image, used by no operation. Initially empty.
    cv::Mat spareImage4;
    /// Spare image, used by no operation. Initially empty.
    cv::Mat spareImage5;

    // Reference plane and regions

    /// Unit normal of the reference plane, pointing away from the camera (positive z). A point p lies on the
    /// plane when refPlaneNormal . p = refPlaneOffset; an all-zero normal means that there is no plane.
    /// Written by calibRef(), ransacCalibRef(), setProductType() and the offline start. Initially (0, 0, 0).
    cv::Vec3f refPlaneNormal{0.0F, 0.0F, 0.0F};
    /// Region used for the calibration of the plane, full-size pixels. Written by setCalibrationRoI().
    /// Initially (W/2 - 50, H/2 - 50, 100, 100), integer halves; (0, 0, 0, 0) after an offline start.
    cv::Rect calibrationRoI;
    /// Region in which objects are measured, full-size pixels. Written by setEffectiveRegionInArea() and
    /// setProductType(). Initially as `calibrationRoI`.
    cv::Rect effectiveRegion;
    /// Perpendicular distance of the reference plane from the camera, mm. Written together with
    /// `refPlaneNormal`. Initially 0.
    float refPlaneOffset = 0.0F;

    // Camera

    /// Value given to setCameraType(): with `cameraTypeSet`, the width in mm of the band that is kept clear at
    /// the left and right image edge at the height of the object's top. Initially 0.
    float cameraType = 0.0F;
    /// Focal length along x, full size, pixels. Written by the constructor. Initially its argument.
    float fx = 0.0F;
    /// Focal length along y, full size, pixels. Written by the constructor. Initially its argument.
    float fy = 0.0F;
    /// 1 / fx, computed in double and rounded. Written by the constructor.
    float invFx = 0.0F;
    /// 1 / fy, computed in double and rounded. Written by the constructor.
    float invFy = 0.0F;
    /// Column of the principal point, full size, pixels. Written by the constructor. Initially its argument.
    float cx = 0.0F;
    /// Row of the principal point, full size, pixels. Written by the constructor. Initially its argument.
    float cy = 0.0F;
    /// Focal length along x for the small images, pixels: fx / 4. 0 after an offline start.
    float fxSmall = 0.0F;
    /// Focal length along y for the small images, pixels: fy / 4. 0 after an offline start.
    float fySmall = 0.0F;
    /// Inverse of `fxSmall`: 4 * invFx. 0 after an offline start.
    float invFxSmall = 0.0F;
    /// Inverse of `fySmall`: 4 * invFy. 0 after an offline start.
    float invFySmall = 0.0F;
    /// Column of the principal point for the small images, pixels: cx / 4. 0 after an offline start.
    float cxSmall = 0.0F;
    /// Row of the principal point for the small images, pixels: cy / 4. 0 after an offline start.
    float cySmall = 0.0F;
    /// Full frame width W, pixels, at most 32768. Written by the constructor. Initially its argument.
    int imageWidth = 0;
    /// Full frame height H, pixels, at most 32768. Written by the constructor. Initially its argument.
    int imageHeight = 0;
    /// Factor between full and small images. Written by the constructor. Initially 4.
    int downScale = 0;

    // Measurement settings and state

    /// Minimum height above the plane of an object point, mm. measureOnce() chooses it by the camera distance
    /// in KIOSK; the other modes take it as it stands. Initially 10.
    float minObjectHeight = 0.0F;
    /// Operating mode, a ProductType value. Written by setProductType(). Initially KIOSK.
    int productType = 0;
    /// A reference plane is available. Written by calibRef(), setProductType(), getCameraFrame() and
    /// getCameraMultipleFrame() in GROUND_TRACKING, and the offline start. Initially false.
    bool calibStatus = false;
    /// An object region needs more small-image pixels than this: the area a 50 mm x 50 mm square covers at the
    /// plane's distance. Written whenever the plane is. Initially 0.
    int minObjectPixels = 0;
    /// Reserved, read by no operation. Initially 50; 0 after an offline start.
    int reservedValue = 0;
    /// The object replays a stored capture and refuses the host's frames. Constructor argument.
    bool offlineMode = false;
    /// Parameter folder, relative to the working directory. Initially "./param".
    std::string paramDir;
    /// Calibration file. Initially `paramDir` + "/cal.txt".
    std::string calFilePath;
    /// Background image. Initially `paramDir` + "/bg.bmp".
    std::string backgroundPath;
    /// Folder of a stored capture. Constructor argument.
    std::string offlineDir;
    /// setCameraType() has been called. Initially false.
    bool cameraTypeSet = false;
    /// Diagnostic lines on standard output are on. Written by setDebugMode(). Initially false.
    bool debugMode = false;
    /// Spare, used by no operation. Initially 0.
    float spareFloat1 = 0.0F;
    /// Distance of the camera from the reference plane, mm. Written by calibRef() and by setProductType() when
    /// it loads a plane. Initially 0.
    float cameraHeight = 0.0F;
    /// Spare, used by no operation. Initially 0.
    float spareFloat2 = 0.0F;
    /// Band above the plane that counts as ground, as a fraction of the camera distance. Written by
    /// setFilterWeight() and setProductType(KIOSK_LOW_OBJECT). Initially 0.
    float filterWeight = 0.0F;

    // Construction

    /// Makes a ruler for one camera, or replays a stored capture.
    ///
    /// Three starts: with `offlineMode` false the arguments are taken as they are, without checks. With
    /// `offlineMode` true and `offlineDir` naming a directory, the capture "./" + `offlineDir` is loaded (para.txt,
    /// color.png, depth.tif) and measured once, and the camera arguments are ignored; a para.txt that is missing,
    /// short or unreadable leads to the first start with `offlineMode` left true, so that frames are refused. With
    /// `offlineMode` true and no such directory every setting stays 0. Nothing is reported or thrown.
    ///
    /// \param fx,fy focal lengths of the depth camera, pixels, full size
    /// \param cx,cy principal point, pixels, full size
    /// \param width,height frame size W, H, pixels; not checked here, frames beyond the limits of getCameraFrame() are
    ///        refused later
    /// \param offlineMode replay a stored capture
    /// \param offlineDir folder of that capture, relative to the working directory
    QUORVEL_API Quorvel(float fx, float fy, float cx, float cy, int width, int height, bool offlineMode,
                        std::string offlineDir);
    /// Copies every member in declaration order; images share their pixel data with `other`.
    QUORVEL_API Quorvel(const Quorvel& other);
    /// Copies every member in declaration order; images share their pixel data with `other`.
    QUORVEL_API Quorvel& operator=(const Quorvel& other);
    /// Releases the images; writes no file.
    QUORVEL_API ~Quorvel();

    // Frame intake and measurement

    /// Takes one frame in: clones it, derives the small images and both point clouds, and in GROUND_TRACKING
    /// fits the reference plane anew. Frames are limited to 32768 pixels a side and 2^26 (67108864) in all; a ruler of
    /// larger frames refuses every one of them before it allocates anything.
    ///
    /// \param color CV_8UC3, H x W
    /// \param depth CV_16UC1, H x W, mm along the optical axis, 0 = no measurement
    /// \return true when the frame was taken in. false when an image is empty (both clones are kept, the derived
    ///         images stay), or when size, type or `downScale` do not fit (nothing changes). In offline mode the
    ///         arguments are ignored and the stored images are used.
    QUORVEL_API bool getCameraFrame(cv::Mat color, cv::Mat depth);
    /// As the two-image form, and keeps a clone of `aux` (any type and size, never checked) in `auxImage`.
    QUORVEL_API bool getCameraFrame(cv::Mat color, cv::Mat depth, cv::Mat aux);

    /// Measures the object nearest the picture's middle in the last frame and stores the outcome in `result`.
    ///
    /// Works in place on `depthSmall` and `pointCloud`: push a new frame before every measurement.
    /// \return 0 when the frame was measured (`result` may still be empty or out of view: read `corners` and
    ///         `inView`) or when the mode measures nothing. 1, with `result` reset, when there is no plane, no usable
    ///         plane, no usable frame or no object. A plane is unusable when one of its four numbers is not finite,
    ///         when the length of its normal is more than a hundredth from 1, when its distance is not positive, or
    ///         when its normal lies along the optical axis and is not exactly (0, 0, 1); in debug mode a line says
    ///         which.
    QUORVEL_API int measureOnce();

    // Settings and queries

    /// \return the version of the library as QUORVEL_VERSION writes it
    QUORVEL_API std::string getVersion();
    /// Sets the width of the band that is kept clear at the left and right image edge.
    /// \param enable accepted and not used
    /// \param value width of the band at the object's top, mm; stored in `cameraType`
    /// \return 0
    QUORVEL_API int setCameraType(bool enable, int value);
    /// Switches the diagnostic lines on standard output on or off.
    QUORVEL_API void setDebugMode(bool on);
    /// \param[out] height distance of the camera from the reference plane, mm; 0 without a plane
    /// \return 0, or 1 without a plane
    QUORVEL_API int getCameraHeight(float& height);
    /// \param[out] status whether a reference plane is available
    /// \return 0
    QUORVEL_API int getCalibStatus(bool& status);
    /// Sets the calibration region as given, without checks.
    /// \param roi full-size pixels
    /// \return 0
    QUORVEL_API int setCalibrationRoI(cv::Rect roi);
    /// Sets the calibration region to the centred part of the picture.
    /// \param ratio share of the width and of the height; not bounded
    /// \param[out] roi the new region, full-size pixels
    /// \return 0
    QUORVEL_API int setCalibrationRoI(float ratio, cv::Rect& roi);
    /// Sets the detection region as given, without checks.
    /// \param roi full-size pixels
    /// \return 0
    QUORVEL_API int setEffectiveRegionInArea(cv::Rect roi);
    /// Sets the detection region to the centred part of the picture.
    /// \param ratio share of the width and of the height; not bounded
    /// \param[out] roi the new region, full-size pixels
    /// \return 0
    QUORVEL_API int setEffectiveRegionInArea(float ratio, cv::Rect& roi);
    /// Sets the band above the plane that counts as ground: depths beyond (1 - weight) * t are dropped before an
    /// object is searched, t being the plane's distance. A negative weight keeps depths beyond the plane, which
    /// a tilted camera needs.
    /// \param weight fraction of the camera distance; not bounded
    /// \return 0
    QUORVEL_API int setFilterWeight(float weight);
    /// Selects the operating mode. KIOSK and KIOSK_LOW_OBJECT also load the plane from the calibration file and
    /// set `effectiveRegion` to the centred fifth of the picture. The plane is taken as the file has it.
    /// Reading stops at the first field that is not a number; that field and those after it keep their values. An
    /// unusable plane counts as loaded, but every measurement refuses it.
    /// \param type the mode
    /// \return 0, also when there is no calibration file
    QUORVEL_API int setProductType(ProductType type);
    /// Does nothing; the object stays usable.
    /// \return 0
    QUORVEL_API int stop();

    // Calibration

    /// Fits the reference plane to the last depth frame, which must show the empty surface inside
    /// `calibrationRoI`, and writes the calibration file and "depth.tif" into `paramDir`.
    ///
    /// A fit that fails keeps the previous plane, and is not reported: check `refPlaneNormal` and
    /// `refPlaneOffset`. Only KIOSK and GROUND_GROWING fit; the other modes keep the plane. Without a usable depth
    /// frame nothing is changed or written. Each file is put in place whole and in one step, when its content is on the
    /// disk. A file that cannot be written is skipped, and the old file stays.
    /// \param[out] t the stored distance of the plane, mm
    /// \param offset added to the fitted distance, mm
    /// \return 0
    QUORVEL_API int calibRef(float& t, float offset);
    /// Fits the reference plane anew to the small point cloud of the last frame; a fit that fails keeps the
    /// previous plane.
    /// \return 0
    QUORVEL_API int ransacCalibRef();

    // Batches

    /// Takes a batch of frames in, all of one instant as nearly as the camera can: keeps the frames (their pixels
    /// are shared with the host and never written), derives the images of each, and makes the first frame the
    /// current one, as getCameraFrame() would. In GROUND_TRACKING the plane is fitted anew to the first frame. A
    /// batch that was never measured is dropped.
    ///
    /// \param colorFrames CV_8UC3, H x W each
    /// \param depthFrames CV_16UC1, H x W each, mm, 0 = no measurement; depthFrames[i] belongs to colorFrames[i]
    /// \return true when the whole batch was taken in. false when the vectors differ in length ("size not match" is
    ///         printed), are empty, hold a frame whose size or type does not fit, or in offline mode: nothing changes
    ///         then. false also when a frame is empty: clones of the first frame and the frames up to the empty one
    ///         are kept, the derived images stay.
    QUORVEL_API bool getCameraMultipleFrame(std::vector<cv::Mat> colorFrames, std::vector<cv::Mat> depthFrames);
    /// Measures every frame of the batch and, when all of them are in view and no two differ by more than the
    /// tolerances, stores the mean length, width and height in `result`, with the corners and flags of the last
    /// frame. A difference equal to its tolerance passes. `colorImage` and `depthImage` then refer to the last frame.
    ///
    /// Measures in KIOSK and GROUND_TRACKING only, and lowers no height in GROUND_TRACKING. "ERROR !! result is
    /// empty." is printed when no frame was measured, "ERROR !! The result did not reach the threshold" when the
    /// frames disagree. The batch is dropped afterwards, except when there is no plane.
    /// \param lengthTolerance,widthTolerance,heightTolerance largest difference between any two frames, mm
    /// \return 0 when `result` holds the mean; 1 otherwise, with `result` reset
    QUORVEL_API int measureMultiple(float lengthTolerance, float widthTolerance, float heightTolerance);

    // Files

    /// Writes `calibrationRoI`, `effectiveRegion` and `filterWeight` into a ruler parameter file.
    /// \param path its extension chooses the format: .xml, .json, or YAML for .yml, .yaml and any other
    /// \return false when the file cannot be written whole (the old file then stays), when the path contains a question
    ///         mark or ends in ".gz", or when it names a folder, a device or a pipe
    /// \throws cv::Exception what the file storage of OpenCV raises
    QUORVEL_API bool saveRulerParam(std::string path);
    /// Reads a ruler parameter file into `calibrationRoI`, `effectiveRegion` and `filterWeight`. A region that is
    /// missing or not a sequence of four numbers becomes (0, 0, 0, 0). A weight that is missing or not a number becomes
    /// 0. Nothing is checked against the frame size.
    /// \param path of the file; its content tells the format
    /// \param[out] calibrationArea the new `calibrationRoI`, full-size pixels
    /// \param[out] detectArea the new `effectiveRegion`, full-size pixels
    /// \return false, with nothing changed, when the file cannot be opened or cannot be a parameter file (more than
    ///         64 KiB, lines of more than 1000 characters, more than 1000 brackets and tags)
    /// \throws cv::Exception when the file is not a valid document; nothing is changed
    QUORVEL_API bool loadRulerParam(std::string path, cv::Rect& calibrationArea, cv::Rect& detectArea);
    /// Writes a capture into a new folder "./log/YYYY-MM/YYYY-MM-DD-hh-mm-ss" of the local time: camera and plane
    /// (para.txt), the last result (res.txt) and the current frame (color.png, depth.tif; left out when empty). The
    /// folder can be given to the constructor, which replays it. An existing folder is never changed, so of several
    /// calls within a second only the first writes. Each file is written whole; a file that cannot be written is
    /// skipped.
    /// \return 0
    /// \throws cv::Exception when OpenCV cannot encode an image
    QUORVEL_API int saveOfflineData();

private:
    void ClearBuffer();
};
