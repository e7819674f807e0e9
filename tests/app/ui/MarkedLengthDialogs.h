#pragma once

#include <QCheckBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <functional>

namespace tavix::test {

// Drives the calibration dialog through a length marked on the still: the
// first time it opens it names the entry, takes two points with one factor
// for both axes and asks to mark the x length; every later time it clicks OK.
// `dialogs` counts the openings.
inline std::function<int(QDialog&)> markedLengthDialogs(const QString& name, int& dialogs)
{
    return [name, &dialogs](QDialog& d) {
        d.show();
        if (dialogs++ == 0) {
            d.findChild<QLineEdit*>(QStringLiteral("txtName"))->setText(name);
            QTest::mouseClick(d.findChild<QRadioButton*>(QStringLiteral("optPointMode(0)")), Qt::LeftButton);
            auto* axis = d.findChild<QCheckBox*>(QStringLiteral("chkAxisOption"));
            if (!axis->isChecked())
                QTest::mouseClick(axis, Qt::LeftButton, {}, QPoint(8, axis->height() / 2));
            QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdValue(0)")), Qt::LeftButton);
        } else {
            QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdOK")), Qt::LeftButton);
        }
        return d.result();
    };
}

}  // namespace tavix::test
