#include "common/Guidance.h"

#include "common/CommentBox.h"
#include "common/GuidanceTable.h"

namespace tavix {

Guidance::Guidance(const GuidanceTable& table, CommentBox& box0, CommentBox& box1)
    : table_(table), boxes_{&box0, &box1}
{
}

void Guidance::DispGuidance(qint16 intGuidanceNo, const std::optional<QString>& vntGuidance2)
{
    for (size_t i = 0; i < boxes_.size(); ++i) {
        CommentBox& box = *boxes_[i];
        // A locked box already shows guidance; the user's text was saved then.
        if (!box.isLocked())
            saved_[i] = box.text();
        box.setText(table_.line(intGuidanceNo, static_cast<int>(i)));
        box.setLocked(true);
    }
    if (vntGuidance2)
        boxes_[1]->setText(*vntGuidance2);
}

void Guidance::HideGuidance()
{
    if (!showing())
        return;
    for (size_t i = 0; i < boxes_.size(); ++i) {
        boxes_[i]->setText(saved_[i]);
        boxes_[i]->setLocked(false);
    }
}

bool Guidance::showing() const
{
    return boxes_[0]->isLocked();
}

}  // namespace tavix
