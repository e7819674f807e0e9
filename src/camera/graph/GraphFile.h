#pragma once

#include <QString>
#include <functional>

// GStreamer's types, kept out of this header so that its users need not see GLib.
struct _GstElement;
struct _GstPad;

namespace tavix {

// The graph file: a capture pipeline the user wrote down in gst-launch-1.0
// syntax (lines starting with '#' are comments). LoadGrfFile parses it without
// starting it and finds the camera element (the one whose name= is the camera
// filter name) and that element's output pin (its first source pad), which
// the graph camera then streams from.
class GraphFile {
public:
    using Log = std::function<void(const QString&)>;

    GraphFile(QString path, QString cameraFilterName, Log log = {});
    ~GraphFile();
    GraphFile(const GraphFile&) = delete;
    GraphFile& operator=(const GraphFile&) = delete;

    // True when the camera element and its output pin were found; the
    // failures log their line and leave nothing kept.
    bool LoadGrfFile();
    // The run-time error number of the last failed load (0 after a success).
    int errorNumber() const { return errorNumber_; }

    // The element of `graph` (itself, or any element inside it) named `name`,
    // or null. Returns a new reference.
    static _GstElement* findFilter(_GstElement* graph, const QString& name);

    QString path() const { return path_; }
    // What the load kept: the whole pipeline, the camera element and its
    // output pin (all null until a load succeeded).
    _GstElement* graph() const { return graph_; }
    _GstElement* cameraFilter() const { return camera_; }
    _GstPad* outputPin() const { return pin_; }
    // The element that opens the camera's video device: the camera element
    // when it is a v4l2src, else the nearest v4l2src upstream of it (through
    // any elements between them); null when there is none. No new reference.
    _GstElement* deviceSource() const;
    // The device file that element opens (its "device" property), empty when
    // there is none.
    QString devicePath() const;

private:
    void clear();
    bool fail(int number, const QString& why = {});
    bool notFound(const char* line);

    QString path_;
    QString filterName_;
    Log log_;
    int errorNumber_ = 0;
    _GstElement* graph_ = nullptr;
    _GstElement* camera_ = nullptr;
    _GstPad* pin_ = nullptr;
};

}  // namespace tavix
