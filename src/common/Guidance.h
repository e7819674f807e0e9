#pragma once

#include <QString>
#include <array>
#include <optional>

namespace tavix {

class CommentBox;
class GuidanceTable;

// Shows guidance in the two comment boxes while a tool waits for input, and
// gives the user's own comments back afterwards.
class Guidance {
public:
    Guidance(const GuidanceTable& table, CommentBox& box0, CommentBox& box1);

    void DispGuidance(qint16 intGuidanceNo, const std::optional<QString>& vntGuidance2 = std::nullopt);
    void HideGuidance();

    bool showing() const;
    const QString& savedComment(int index) const { return saved_.at(static_cast<size_t>(index)); }

private:
    const GuidanceTable& table_;
    std::array<CommentBox*, 2> boxes_;
    std::array<QString, 2> saved_;
};

}  // namespace tavix
