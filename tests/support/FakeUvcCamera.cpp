#include "FakeUvcCamera.h"

#include <algorithm>
#include <cerrno>

namespace tavix::test {

namespace {

// The control an automatic mode governs, with the mode's "on" test.
struct Governed {
    std::uint32_t governed;
    std::uint32_t mode;
};

constexpr Governed kGoverned[] = {
    {V4L2_CID_EXPOSURE_ABSOLUTE, V4L2_CID_EXPOSURE_AUTO},
    {V4L2_CID_WHITE_BALANCE_TEMPERATURE, V4L2_CID_AUTO_WHITE_BALANCE},
    {V4L2_CID_RED_BALANCE, V4L2_CID_AUTO_WHITE_BALANCE},
    {V4L2_CID_BLUE_BALANCE, V4L2_CID_AUTO_WHITE_BALANCE},
    {V4L2_CID_FOCUS_ABSOLUTE, V4L2_CID_FOCUS_AUTO},
    {V4L2_CID_GAIN, V4L2_CID_AUTOGAIN},
};

bool isMenu(const V4l2ControlAccess::Control& c)
{
    return c.type == V4L2_CTRL_TYPE_MENU || c.type == V4L2_CTRL_TYPE_INTEGER_MENU;
}

}  // namespace

struct FakeUvcCamera::State {
    struct Entry {
        Control control;
        std::int32_t value = 0;
        std::vector<std::uint32_t> menu;
    };
    std::map<std::uint32_t, Entry> entries;
    std::map<std::uint32_t, std::int32_t> found;
    struct Refusal {
        int error;
        std::optional<std::int32_t> onlyValue;
    };
    std::map<std::uint32_t, Refusal> refusals;
    bool unplugged = false;
    QStringList writes;
    QStringList refused;

    bool modeOn(std::uint32_t mode) const
    {
        const auto e = entries.find(mode);
        if (e == entries.end())
            return false;
        return mode == V4L2_CID_EXPOSURE_AUTO ? e->second.value != V4L2_EXPOSURE_MANUAL
                                              : e->second.value != 0;
    }
    bool inactive(std::uint32_t id) const
    {
        for (const Governed& g : kGoverned)
            if (g.governed == id && modeOn(g.mode))
                return true;
        return false;
    }
    int set(std::uint32_t id, std::int32_t value)
    {
        const auto fail = [&](int error) {
            refused.append(QStringLiteral("%1=%2:%3").arg(name(id)).arg(value).arg(error));
            return error;
        };
        if (unplugged)
            return fail(ENODEV);
        const auto e = entries.find(id);
        if (e == entries.end() || (e->second.control.flags & V4L2_CTRL_FLAG_DISABLED))
            return fail(EINVAL);
        Entry& entry = e->second;
        if (const auto r = refusals.find(id);
            r != refusals.end() && (!r->second.onlyValue || *r->second.onlyValue == value))
            return fail(r->second.error);
        if ((entry.control.flags & V4L2_CTRL_FLAG_READ_ONLY) || inactive(id))
            return fail(EACCES);
        const Control& c = entry.control;
        if (isMenu(c)) {
            if (value < c.minimum || value > c.maximum ||
                std::find(entry.menu.begin(), entry.menu.end(), static_cast<std::uint32_t>(value)) ==
                    entry.menu.end())
                return fail(EINVAL);
        } else if (c.type == V4L2_CTRL_TYPE_BOOLEAN || c.type == V4L2_CTRL_TYPE_BUTTON) {
            value = value != 0 ? 1 : 0;
        } else {
            // The kernel driver rounds to the step and clamps to the range.
            const std::int32_t step = std::max(1, c.step);
            value = std::clamp(value, c.minimum, c.maximum);
            value = c.minimum + (value - c.minimum + step / 2) / step * step;
            value = std::min(value, c.maximum);
        }
        const bool wasOn = modeOn(id);
        if (c.type != V4L2_CTRL_TYPE_BUTTON)
            entry.value = value;
        writes.append(QStringLiteral("%1=%2").arg(name(id)).arg(value));
        // An automatic mode switched on takes over what it governs.
        for (const Governed& g : kGoverned) {
            const auto governed = entries.find(g.governed);
            if (g.mode == id && !wasOn && modeOn(id) && governed != entries.end()) {
                const auto f = found.find(g.governed);
                if (f != found.end())
                    governed->second.value = f->second;
            }
        }
        return 0;
    }
};

class FakeUvcCamera::Access : public V4l2ControlAccess {
public:
    explicit Access(std::shared_ptr<State> s) : s_(std::move(s)) {}

    int query(std::uint32_t id, Control& control) override
    {
        if (s_->unplugged)
            return ENODEV;
        const auto e = s_->entries.find(id);
        if (e == s_->entries.end())
            return EINVAL;
        control = e->second.control;
        if (s_->inactive(id))
            control.flags |= V4L2_CTRL_FLAG_INACTIVE;
        return 0;
    }
    int queryMenu(std::uint32_t id, std::uint32_t index) override
    {
        if (s_->unplugged)
            return ENODEV;
        const auto e = s_->entries.find(id);
        if (e == s_->entries.end() || !isMenu(e->second.control))
            return EINVAL;
        const auto& menu = e->second.menu;
        return std::find(menu.begin(), menu.end(), index) == menu.end() ? EINVAL : 0;
    }
    int get(std::uint32_t id, std::int32_t& value) override
    {
        if (s_->unplugged)
            return ENODEV;
        const auto e = s_->entries.find(id);
        if (e == s_->entries.end())
            return EINVAL;
        if (e->second.control.type == V4L2_CTRL_TYPE_BUTTON ||
            (e->second.control.flags & V4L2_CTRL_FLAG_WRITE_ONLY))
            return EACCES;
        value = e->second.value;
        return 0;
    }
    int set(std::uint32_t id, std::int32_t value) override { return s_->set(id, value); }

private:
    std::shared_ptr<State> s_;
};

FakeUvcCamera::FakeUvcCamera() : s_(std::make_shared<State>())
{
}

FakeUvcCamera FakeUvcCamera::webcam()
{
    const auto integer = [](std::int32_t min, std::int32_t max, std::int32_t step, std::int32_t def) {
        return Control{V4L2_CTRL_TYPE_INTEGER, min, max, step, def, 0};
    };
    const auto boolean = [](std::int32_t def) { return Control{V4L2_CTRL_TYPE_BOOLEAN, 0, 1, 1, def, 0}; };
    const auto menu = [](std::int32_t min, std::int32_t max, std::int32_t def) {
        return Control{V4L2_CTRL_TYPE_MENU, min, max, 1, def, 0};
    };
    FakeUvcCamera f;
    f.add(V4L2_CID_BRIGHTNESS, integer(-64, 64, 1, 0), 0);
    f.add(V4L2_CID_CONTRAST, integer(0, 64, 1, 32), 32);
    f.add(V4L2_CID_SATURATION, integer(0, 128, 1, 64), 64);
    f.add(V4L2_CID_HUE, integer(-40, 40, 1, 0), 0);
    f.add(V4L2_CID_GAMMA, integer(72, 500, 1, 100), 100);
    f.add(V4L2_CID_GAIN, integer(0, 100, 1, 0), 0);
    f.add(V4L2_CID_POWER_LINE_FREQUENCY, menu(0, 2, 1), 1, {0, 1, 2});
    f.add(V4L2_CID_AUTO_WHITE_BALANCE, boolean(1), 1);
    f.add(V4L2_CID_WHITE_BALANCE_TEMPERATURE, integer(2800, 6500, 1, 4600), 4600);
    f.setFound(V4L2_CID_WHITE_BALANCE_TEMPERATURE, 5200);
    f.add(V4L2_CID_EXPOSURE_AUTO, menu(0, 3, V4L2_EXPOSURE_APERTURE_PRIORITY),
          V4L2_EXPOSURE_APERTURE_PRIORITY, {V4L2_EXPOSURE_MANUAL, V4L2_EXPOSURE_APERTURE_PRIORITY});
    f.add(V4L2_CID_EXPOSURE_ABSOLUTE, integer(3, 2047, 1, 250), 250);
    f.setFound(V4L2_CID_EXPOSURE_ABSOLUTE, 156);
    f.add(V4L2_CID_EXPOSURE_AUTO_PRIORITY, boolean(0), 0);
    f.add(V4L2_CID_FOCUS_AUTO, boolean(1), 1);
    f.add(V4L2_CID_FOCUS_ABSOLUTE, integer(0, 250, 5, 0), 0);
    f.setFound(V4L2_CID_FOCUS_ABSOLUTE, 120);
    return f;
}

std::unique_ptr<V4l2ControlAccess> FakeUvcCamera::controls() const
{
    return std::make_unique<Access>(s_);
}

void FakeUvcCamera::add(std::uint32_t id, Control control, std::int32_t value,
                        std::vector<std::uint32_t> menu)
{
    s_->entries[id] = State::Entry{control, value, std::move(menu)};
}

void FakeUvcCamera::remove(std::uint32_t id)
{
    s_->entries.erase(id);
}

void FakeUvcCamera::setRange(std::uint32_t id, std::int32_t minimum, std::int32_t maximum,
                             std::int32_t defaultValue)
{
    Control& c = s_->entries.at(id).control;
    c.minimum = minimum;
    c.maximum = maximum;
    c.defaultValue = defaultValue;
}

void FakeUvcCamera::put(std::uint32_t id, std::int32_t value)
{
    s_->entries.at(id).value = value;
}

std::int32_t FakeUvcCamera::value(std::uint32_t id) const
{
    return s_->entries.at(id).value;
}

bool FakeUvcCamera::has(std::uint32_t id) const
{
    return s_->entries.count(id) != 0;
}

bool FakeUvcCamera::inactive(std::uint32_t id) const
{
    return s_->inactive(id);
}

void FakeUvcCamera::refuse(std::uint32_t id, int error, std::optional<std::int32_t> onlyValue)
{
    s_->refusals[id] = State::Refusal{error, onlyValue};
}

void FakeUvcCamera::setFound(std::uint32_t governed, std::int32_t value)
{
    s_->found[governed] = value;
}

void FakeUvcCamera::unplug()
{
    s_->unplugged = true;
}

QStringList FakeUvcCamera::writes() const
{
    return s_->writes;
}

void FakeUvcCamera::clearWrites()
{
    s_->writes.clear();
    s_->refused.clear();
}

QStringList FakeUvcCamera::refusedWrites() const
{
    return s_->refused;
}

QString FakeUvcCamera::name(std::uint32_t id)
{
    switch (id) {
        case V4L2_CID_BRIGHTNESS:
            return QStringLiteral("brightness");
        case V4L2_CID_CONTRAST:
            return QStringLiteral("contrast");
        case V4L2_CID_SATURATION:
            return QStringLiteral("saturation");
        case V4L2_CID_HUE:
            return QStringLiteral("hue");
        case V4L2_CID_GAMMA:
            return QStringLiteral("gamma");
        case V4L2_CID_GAIN:
            return QStringLiteral("gain");
        case V4L2_CID_AUTOGAIN:
            return QStringLiteral("gain_automatic");
        case V4L2_CID_BLACK_LEVEL:
            return QStringLiteral("black_level");
        case V4L2_CID_VFLIP:
            return QStringLiteral("vertical_flip");
        case V4L2_CID_HFLIP:
            return QStringLiteral("horizontal_flip");
        case V4L2_CID_RED_BALANCE:
            return QStringLiteral("red_balance");
        case V4L2_CID_BLUE_BALANCE:
            return QStringLiteral("blue_balance");
        case V4L2_CID_POWER_LINE_FREQUENCY:
            return QStringLiteral("power_line_frequency");
        case V4L2_CID_AUTO_WHITE_BALANCE:
            return QStringLiteral("white_balance_automatic");
        case V4L2_CID_DO_WHITE_BALANCE:
            return QStringLiteral("do_white_balance");
        case V4L2_CID_WHITE_BALANCE_TEMPERATURE:
            return QStringLiteral("white_balance_temperature");
        case V4L2_CID_EXPOSURE_AUTO:
            return QStringLiteral("auto_exposure");
        case V4L2_CID_EXPOSURE_ABSOLUTE:
            return QStringLiteral("exposure_time_absolute");
        case V4L2_CID_EXPOSURE_AUTO_PRIORITY:
            return QStringLiteral("exposure_dynamic_framerate");
        case V4L2_CID_FOCUS_AUTO:
            return QStringLiteral("focus_automatic_continuous");
        case V4L2_CID_FOCUS_ABSOLUTE:
            return QStringLiteral("focus_absolute");
        default:
            return QString::number(id);
    }
}

}  // namespace tavix::test
