#pragma once

#include "camera/graph/VideoDeviceSystem.h"

#include <linux/videodev2.h>
#include <map>

namespace tavix::test {

// Video devices as a UVC camera's kernel driver presents them: each camera
// plugged in brings a capture node and a metadata node, with by-id links to
// both; unplugging takes all of it away, and a replug may come back under
// other node numbers.
class FakeVideoDevices : public VideoDeviceSystem {
public:
    static constexpr std::uint32_t kCapture = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    static constexpr std::uint32_t kMetadata = V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING;

    // A UVC camera on /dev/video<first> (pictures) and /dev/video<first+1> (metadata).
    void plugUvc(int first, const QString& card, const QString& busInfo, const QString& serialLink)
    {
        add(first, {card, busInfo, kCapture}, serialLink + QStringLiteral("-video-index0"));
        add(first + 1, {card, busInfo, kMetadata}, serialLink + QStringLiteral("-video-index1"));
    }
    void add(int number, const Capability& cap, const QString& byId = {})
    {
        nodes_[node(number)] = {cap, byId, 0};
    }
    void unplug(const QString& card)
    {
        for (auto it = nodes_.begin(); it != nodes_.end();)
            it = it->second.cap.card == card ? nodes_.erase(it) : std::next(it);
    }
    // The node answers its open with this errno (EACCES: no right to it).
    void failOpen(int number, int error) { nodes_[node(number)].error = error; }

    static QString node(int number) { return QStringLiteral("/dev/video%1").arg(number); }

    QStringList nodes() const override
    {
        QStringList list;
        for (const auto& [path, entry] : nodes_)
            list << path;
        return list;
    }
    int queryCapability(const QString& node, Capability& capability) const override
    {
        const auto it = nodes_.find(node);
        if (it == nodes_.end())
            return ENOENT;
        if (it->second.error != 0)
            return it->second.error;
        capability = it->second.cap;
        return 0;
    }
    std::vector<Link> byIdLinks() const override
    {
        std::vector<Link> links;
        for (const auto& [path, entry] : nodes_)
            if (!entry.byId.isEmpty())
                links.push_back({QStringLiteral("/dev/v4l/by-id/") + entry.byId, path});
        return links;
    }

private:
    struct Entry {
        Capability cap;
        QString byId;
        int error = 0;
    };
    std::map<QString, Entry> nodes_;
};

}  // namespace tavix::test
