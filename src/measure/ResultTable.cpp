#include "measure/ResultTable.h"

#include "common/ErrorLog.h"
#include "common/MessageTable.h"
#include "common/Prompter.h"
#include "common/RunError.h"
#include "common/SafeFile.h"
#include "measure/ValueFormat.h"

#include <QBrush>
#include <algorithm>

namespace tavix {

ResultTable::ResultTable(QObject* parent)
    : QAbstractTableModel(parent), rows_(kValueSlots), values_(kValueSlots, 0.0)
{
}

void ResultTable::setHeaderCaptions(const QStringList& captions)
{
    for (int c = 0; c < kColumns; ++c)
        rows_[0][c] = captions.value(c);
    emit headerDataChanged(Qt::Horizontal, 0, kColumns - 1);
}

int ResultTable::addResult(const QString& kindCaption, double value, const QString& unitText)
{
    if (isFull())
        return 0;
    emit aboutToChange();
    const int row = count_ + 1;
    beginInsertRows(QModelIndex(), row - 1, row - 1);
    rows_[row] = {QString::number(row), kindCaption, ValueFormat::format(value, decimals_), unitText};
    values_[row] = value;
    count_ = row;
    endInsertRows();
    unsaved_ = true;
    emit stateChanged();
    return row;
}

void ResultTable::ClearResults(int mode)
{
    const bool newPictureStarts = mode == KeepAll;
    if (!keepResult_)
        mode = All;
    if (newPictureStarts)
        emit newPicture();
    else if ((mode == All ? 1 : firstCurrentRow_) <= count_)
        emit aboutToChange();  // a clear that drops no row is no change
    if (mode == All)
        firstCurrentRow_ = 1;
    if (mode != KeepAll) {
        if (firstCurrentRow_ <= count_) {
            beginRemoveRows(QModelIndex(), firstCurrentRow_ - 1, count_ - 1);
            for (int r = firstCurrentRow_; r <= count_; ++r) {
                rows_[r] = Row{};
                values_[r] = 0;
            }
            count_ = firstCurrentRow_ - 1;
            endRemoveRows();
        }
        emit selectionRequested(1);
    }
    emit measurementsCleared();
    if (mode == KeepAll)
        firstCurrentRow_ = count_ + 1;
    recolour();
    unsaved_ = false;
    emit redrawRequested();
    emit stateChanged();
}

bool ResultTable::clearAll(Prompter& prompter, const MessageTable& messages)
{
    if (count_ == 0)
        return false;
    const Prompter::Answer answer =
        prompter.message({messages.text(kMsgClearQuestion), messages.text(kMsgClearTitle),
                          Prompter::Icon::Question, Prompter::Buttons::YesNo, Prompter::Answer::No});
    if (answer == Prompter::Answer::No)
        return false;
    ClearResults(All);
    return true;
}

ResultTable::RemoveOutcome ResultTable::removeResults(int currentRow, int selectionEndRow, Prompter& prompter,
                                                      const MessageTable& messages)
{
    RemoveOutcome outcome;
    int first = std::min(currentRow, selectionEndRow);
    int last = std::max(currentRow, selectionEndRow);
    // Row 0 is the header and never a result.
    if (first > count_ || last < 1)
        return outcome;
    first = std::max(first, 1);

    const Prompter::Answer answer =
        prompter.message({messages.text(kMsgRemoveQuestion), messages.text(kMsgRemoveTitle),
                          Prompter::Icon::Question, Prompter::Buttons::YesNo, Prompter::Answer::No});
    if (answer == Prompter::Answer::No) {
        outcome.status = RemoveOutcome::Declined;
        return outcome;
    }

    emit aboutToChange();
    last = std::min(last, count_);
    const int removed = last - first + 1;
    if (firstCurrentRow_ >= first && firstCurrentRow_ <= last)
        firstCurrentRow_ = first;
    else if (firstCurrentRow_ > last)
        firstCurrentRow_ -= removed;

    const int oldCount = count_;
    beginRemoveRows(QModelIndex(), first - 1, last - 1);
    for (int r = last + 1; r <= oldCount; ++r) {
        const int to = r - removed;
        rows_[to] = rows_[r];
        values_[to] = values_[r];
        rows_[to][0] = QString::number(to);
    }
    for (int r = oldCount - removed + 1; r <= oldCount; ++r) {
        rows_[r] = Row{};
        values_[r] = 0;
    }
    count_ = oldCount - removed;
    endRemoveRows();
    if (first <= count_)  // the moved rows got new numbers
        emit dataChanged(index(first - 1, 0), index(count_ - 1, 0), {Qt::DisplayRole});
    recolour();
    emit rowsRemovedFromStore(first, last);

    outcome.status = RemoveOutcome::Removed;
    outcome.first = first;
    outcome.last = last;
    outcome.selectRow = first <= count_ ? first : 0;

    emit redrawRequested();
    unsaved_ = count_ >= firstCurrentRow_;
    if (outcome.selectRow != 0)
        emit selectionRequested(outcome.selectRow);
    emit stateChanged();
    return outcome;
}

void ResultTable::reformat(int decimals)
{
    decimals_ = std::max(decimals, 0);
    for (int r = 1; r <= count_; ++r)
        rows_[r][2] = ValueFormat::format(values_[r], decimals_);
    if (count_ > 0)
        emit dataChanged(index(0, 2), index(count_ - 1, 2), {Qt::DisplayRole});
}

QByteArray ResultTable::csvText(const std::optional<AverageLine>& average) const
{
    const QChar comma = QLatin1Char(',');
    const QLatin1String lineEnd("\r\n");
    QString out;
    out.reserve(count_ * 40);
    for (int r = 1; r <= count_; ++r) {
        const Row& row = rows_[r];
        // Appended piece by piece: no temporary string per row.
        for (int c = 0; c < kColumns; ++c) {
            if (c > 0)
                out += comma;
            out += row[c];
        }
        out += lineEnd;
    }
    if (average) {
        out += QString::number(count_ + 1) + comma + average->caption + comma +
               ValueFormat::format(average->value, decimals_) + comma + average->unit + lineEnd;
    }
    return out.toUtf8();
}

bool ResultTable::saveCsv(const QString& path, const std::optional<AverageLine>& average)
{
    lastError_ = SafeFile::write(path, csvText(average));
    if (lastError_ != 0)
        return false;
    unsaved_ = false;
    emit saved();
    emit stateChanged();
    return true;
}

ResultTable::Snapshot ResultTable::snapshot() const
{
    Snapshot s;
    s.rows.assign(rows_.begin() + 1, rows_.begin() + 1 + count_);
    s.values.assign(values_.begin() + 1, values_.begin() + 1 + count_);
    s.firstCurrentRow = firstCurrentRow_;
    s.unsaved = unsaved_;
    return s;
}

void ResultTable::restore(const Snapshot& snapshot)
{
    const int count = std::min(static_cast<int>(snapshot.rows.size()), kMaxResults);
    beginResetModel();
    for (int r = 1; r <= std::max(count, count_); ++r) {
        const bool kept = r <= count;
        rows_[r] = kept ? snapshot.rows[r - 1] : Row{};
        values_[r] = kept ? snapshot.values[r - 1] : 0.0;
        if (kept)
            rows_[r][2] = ValueFormat::format(values_[r], decimals_);
    }
    count_ = count;
    firstCurrentRow_ = snapshot.firstCurrentRow;
    unsaved_ = snapshot.unsaved;
    endResetModel();
    emit redrawRequested();
    emit stateChanged();
}

ResultTable::SaveOutcome ResultTable::cmdResultSave(Prompter& prompter, const MessageTable& messages,
                                                    const std::optional<AverageLine>& average,
                                                    const ErrorLog* log)
{
    if (!hasResults())
        return SaveOutcome::NothingToSave;
    Prompter::FileRequest request;
    request.filter = messages.text(kMsgFileFilter);
    request.save = true;
    const QString path = prompter.fileName(request);
    if (path.isEmpty())
        return SaveOutcome::Cancelled;

    if (!saveCsv(path, average)) {
        if (log)
            log->write(QStringLiteral("frmMain:cmdResultSave Error.(%1)").arg(lastError_));
        prompter.message({messages.text(kMsgSaveFailed, path), messages.text(kMsgSaveTitle),
                          Prompter::Icon::Exclamation, Prompter::Buttons::Ok, Prompter::Answer::Ok});
        return SaveOutcome::Failed;
    }
    prompter.message({messages.text(kMsgSaved), messages.text(kMsgSaveTitle), Prompter::Icon::Information,
                      Prompter::Buttons::Ok, Prompter::Answer::Ok});
    return SaveOutcome::Saved;
}

ResultTable::AverageLine ResultTable::averageLine(const MessageTable& messages, double value,
                                                  const QString& unit)
{
    return {messages.text(kMsgAverageCaption), value, unit};
}

void ResultTable::tellTableFull(Prompter& prompter, const MessageTable& messages)
{
    prompter.message({messages.text(kMsgTableFull), messages.text(kMsgTableFullTitle),
                      Prompter::Icon::Exclamation, Prompter::Buttons::Ok, Prompter::Answer::Ok});
}

void ResultTable::checkRow(int row) const
{
    if (row < 0 || row >= kValueSlots)
        throw RunError(err::SubscriptOutOfRange);
}

double ResultTable::value(int row) const
{
    checkRow(row);
    return values_[row];
}

QString ResultTable::text(int row, int column) const
{
    checkRow(row);
    if (column < 0 || column >= kColumns)
        throw RunError(err::SubscriptOutOfRange);
    return rows_[row][column];
}

QColor ResultTable::rowColor(int row) const
{
    return row < firstCurrentRow_ ? keptColor() : currentColor();
}

void ResultTable::recolour()
{
    if (count_ > 0)
        emit dataChanged(index(0, 0), index(count_ - 1, kColumns - 1), {Qt::ForegroundRole});
}

int ResultTable::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : count_;
}

int ResultTable::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : kColumns;
}

QVariant ResultTable::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= count_ || index.column() >= kColumns)
        return {};
    const int row = index.row() + 1;
    switch (role) {
        case Qt::DisplayRole:
            return rows_[row][index.column()];
        case Qt::ForegroundRole:
            return QBrush(rowColor(row));
        default:
            return {};
    }
}

QVariant ResultTable::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 && section < kColumns)
        return rows_[0][section];
    return QAbstractTableModel::headerData(section, orientation, role);
}

Qt::ItemFlags ResultTable::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

}  // namespace tavix
