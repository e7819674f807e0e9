#include "camera/CameraChooser.h"

namespace tavix {

CameraChooser::CameraChooser(std::vector<CameraChoice> cameras, const CameraChoice& current, Switch doSwitch)
    : cameras_(std::move(cameras)), switch_(std::move(doSwitch))
{
    for (size_t i = 0; i < cameras_.size() && current_ < 0; ++i)
        if (cameras_[i].driver == current.driver && cameras_[i].id == current.id)
            current_ = static_cast<int>(i);
    for (size_t i = 0; i < cameras_.size() && current_ < 0; ++i)
        if (cameras_[i].driver == current.driver)
            current_ = static_cast<int>(i);
}

QStringList CameraChooser::items() const
{
    QStringList list;
    for (const CameraChoice& c : cameras_)
        list << (c.place.isEmpty() ? c.name : QStringLiteral("%1 (%2)").arg(c.name, c.place));
    return list;
}

bool CameraChooser::choose(int index)
{
    if (index < 0 || index >= static_cast<int>(cameras_.size()) || index == current_ || !switch_)
        return false;
    if (!switch_(cameras_[static_cast<size_t>(index)]))
        return false;
    current_ = index;
    return true;
}

}  // namespace tavix
