#include "files/ui/frmiCubeSaveAvi.h"

#include "common/MessageTable.h"
#include "common/Prompter.h"
#include "common/ui/WidgetNames.h"
#include "files/VideoRecording.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace tavix {

frmiCubeSaveAvi::frmiCubeSaveAvi(qint16& length, const MessageTable& messages, Prompter& prompter,
                                 const ErrorLog& log, QWidget* parent)
    : GuardedDialog("frmiCubeSaveAvi", log, parent),
      length_(length),
      longest_(length),
      messages_(messages),
      prompter_(prompter)
{
    setModal(true);
    setWindowTitle(QStringLiteral("Save stream to AVI file"));
    auto* column = new QVBoxLayout(this);
    column->setSizeConstraint(QLayout::SetFixedSize);

    auto* row = new QHBoxLayout;
    row->addWidget(
        named(new QLabel(QStringLiteral("Stream length (1-999) :"), this), QStringLiteral("Label1")));
    txtRecTime_ = named(new QLineEdit(this), QStringLiteral("txtRecTime"));
    txtRecTime_->setMaxLength(5);
    txtRecTime_->setFixedWidth(txtRecTime_->fontMetrics().horizontalAdvance(QStringLiteral("000000")) + 12);
    row->addWidget(txtRecTime_);
    row->addWidget(named(new QLabel(QStringLiteral("[seconds]"), this), QStringLiteral("Label2")));
    column->addLayout(row);

    auto* ok = named(new QPushButton(QStringLiteral("&OK"), this), QStringLiteral("cmdOK"));
    ok->setDefault(true);
    auto* cancel = named(new QPushButton(QStringLiteral("&Cancel"), this), QStringLiteral("cmdCancel"));
    cancel->setAutoDefault(false);
    connect(ok, &QPushButton::clicked, this, [this] { guarded("cmdOK_Click", [this] { cmdOK_Click(); }); });
    connect(cancel, &QPushButton::clicked, this, &frmiCubeSaveAvi::reject);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    column->addLayout(buttons);
}

void frmiCubeSaveAvi::cmdOK_Click()
{
    const qint16 chosen = VideoRecording::parseLength(txtRecTime_->text(), longest_);
    if (chosen == 0) {
        prompter_.message({messages_.text(VideoRecording::kMsgBadLength, longest_),
                           messages_.text(VideoRecording::kMsgBadLengthTitle), Prompter::Icon::Exclamation});
        txtRecTime_->setFocus();
        return;
    }
    length_ = chosen;
    accept();
}

void frmiCubeSaveAvi::reject()
{
    guarded("cmdCancel_Click", [this] { length_ = 0; });
    QDialog::reject();
}

}  // namespace tavix
