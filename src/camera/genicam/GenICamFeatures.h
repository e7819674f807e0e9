#pragma once

#include "camera/CameraDriver.h"

#include <QString>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

struct _ArvCamera;

namespace tavix {

// The program's parameters on a GenICam camera's standard features: which
// feature (behind which selector entry) each parameter type is, its scale,
// its automatic mode, and the values the camera had when it was opened,
// which serve as the defaults. Answers the driver's status codes for the
// parameter itself; whether a camera is open is the driver's to check.
class GenICamFeatures {
public:
    using Log = std::function<void(const QString&)>;

    explicit GenICamFeatures(Log log = {});

    // The camera the features are read from and written to (not owned), its
    // present values taken as the defaults; null when it is closed.
    void attach(_ArvCamera* camera);

    int range(int type, CamParamRange& range) const;
    int get(int type, std::int32_t& value) const;
    int set(int type, std::int32_t value);
    int getAuto(int type, std::int32_t& flag) const;
    int setAuto(int type, std::int32_t flag);
    int setAutoDefault(int type);
    // The white balance (6) runs once.
    int onePush(int type);

private:
    struct Feature;  // where a parameter lives on the camera

    bool feature(int type, Feature& f) const;
    int read(const Feature& f, std::int32_t& value) const;
    int write(const Feature& f, std::int32_t value);
    bool autoOn(const char* autoFeature) const;
    bool hasAuto(int type) const;

    Log log_;
    _ArvCamera* camera_ = nullptr;
    std::vector<std::pair<int, std::int32_t>> defaults_;
    std::vector<std::pair<int, std::int32_t>> autoDefaults_;
};

}  // namespace tavix
