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
// its automatic mode, and its default: the camera's factory setting, read at
// attach by loading the camera's "Default" user set and then putting the
// user's values back (the values at attach when the camera has no user sets).
// Answers the driver's status codes for the parameter itself; whether a
// camera is open is the driver's to check.
class GenICamFeatures {
public:
    using Log = std::function<void(const QString&)>;
    // Puts the camera's factory settings in place; false when it has none.
    using FactoryLoader = std::function<bool(_ArvCamera*)>;

    explicit GenICamFeatures(Log log = {});

    // Loads UserSetSelector "Default" with UserSetLoad.
    static bool loadDefaultUserSet(_ArvCamera* camera);
    // How attach reaches the factory settings (tests play the camera here).
    void setFactoryLoader(FactoryLoader loader) { loader_ = std::move(loader); }

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
    struct Feature;   // where a parameter lives on the camera
    struct Snapshot;  // what the user set, to be put back after the factory settings were read

    bool feature(int type, Feature& f) const;
    int read(const Feature& f, std::int32_t& value) const;
    int write(const Feature& f, std::int32_t value);
    bool autoOn(const char* autoFeature) const;
    bool hasAuto(int type) const;
    Snapshot take() const;
    void putBack(const Snapshot& user);

    Log log_;
    FactoryLoader loader_ = &loadDefaultUserSet;
    _ArvCamera* camera_ = nullptr;
    std::vector<std::pair<int, std::int32_t>> defaults_;
    std::vector<std::pair<int, std::int32_t>> autoDefaults_;
};

}  // namespace tavix
