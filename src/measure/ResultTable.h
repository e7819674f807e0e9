#pragma once

#include "measure/ResultTableState.h"

#include <QAbstractTableModel>
#include <QByteArray>
#include <QColor>
#include <QString>
#include <QStringList>
#include <array>
#include <optional>
#include <vector>

namespace tavix {

class ErrorLog;
class MessageTable;
class Prompter;

// The result table of the main window: one row per finished measurement with
// its number, kind, value and unit, and the file it is saved to.
//
// Rows are numbered from 1 (row 0 is the header) and the number indexes the
// value store, which has 1000 slots; slot 0 is never used, so the table holds
// at most 999 results. Rows before the first current row are kept results of
// earlier pictures, shown grey; the current picture's rows are black.
//
// As a model, model row r is result row r + 1 and only rows 1..count() are
// shown; columns are number, kind, value, unit. The measurement store, the
// picture and the buttons belong to others: the table tells them through its
// signals what to follow.
class ResultTable : public QAbstractTableModel, public ResultTableState {
    Q_OBJECT

public:
    static constexpr int kColumns = 4;
    static constexpr int kValueSlots = 1000;             // value store indexes 0..999
    static constexpr int kMaxResults = kValueSlots - 1;  // the row number indexes the store

    // Message ids used here.
    static constexpr qint32 kMsgClearQuestion = 20070, kMsgClearTitle = 11070;
    static constexpr qint32 kMsgRemoveQuestion = 20080, kMsgRemoveTitle = 11080;
    static constexpr qint32 kMsgSaved = 20090, kMsgSaveTitle = 11090, kMsgFileFilter = 11091;
    static constexpr qint32 kMsgAverageCaption = 10114;
    static constexpr qint32 kMsgTableFull = 20095, kMsgTableFullTitle = 11095;
    static constexpr qint32 kMsgSaveFailed = 20096;  // "@" = the file name

    // Text colours: entries 8 (grey) and 0 (black) of the classic 16-colour palette.
    static QColor keptColor() { return QColor(128, 128, 128); }
    static QColor currentColor() { return QColor(0, 0, 0); }

    // What ClearResults drops. Any mode other than 0 and 2 acts as 1.
    enum ClearMode : int {
        KeepAll = 0,         // a new picture: every row is kept and greyed
        CurrentPicture = 1,  // the current picture's rows go, kept rows stay
        All = 2              // every row goes
    };

    // The extra line of the saved file when the two-point average is kept.
    struct AverageLine {
        QString caption;  // message 10114
        double value = 0;
        QString unit;  // unit text of the current calibration entry
    };

    struct RemoveOutcome {
        enum Status {
            NothingSelected,  // the selection starts below the last result: nothing asked
            Declined,         // the user answered No
            Removed
        };
        Status status = NothingSelected;
        int first = 0, last = 0;  // the removed rows, after clipping to the count
        int selectRow = 0;        // the row to select afterwards, 0 for none
    };

    enum class SaveOutcome {
        NothingToSave,  // the table is empty: no dialog
        Cancelled,      // no file name chosen: nothing written
        Saved,
        Failed  // the file could not be written; an old file of that name is whole
    };

    // Everything the table holds of its results, to go back to (undo).
    struct Snapshot {
        std::vector<std::array<QString, kColumns>> rows;  // rows 1..count
        std::vector<double> values;                       // their value store slots
        int firstCurrentRow = 1;
        bool unsaved = false;

        // Rows of the current picture: what an unsaved flag is about.
        bool hasCurrentRows() const { return static_cast<int>(rows.size()) >= firstCurrentRow; }
    };

    explicit ResultTable(QObject* parent = nullptr);

    // Captions of the four columns (number, kind, value, unit).
    void setHeaderCaptions(const QStringList& captions);

    // Mirrors KEEPRESULT / chkKeepResult.
    void setKeepResult(bool keep) { keepResult_ = keep; }
    bool keepResult() const { return keepResult_; }

    // Decimals of the value column (NUMBEROFDECIMALS); see reformat.
    int decimals() const { return decimals_; }

    // Appends a row of the current picture: next number, kind, the value
    // written with the current decimals, unit. Returns its row number, or 0
    // when the table is full (999 results): then nothing changes and the
    // caller tells the user (tellTableFull).
    int addResult(const QString& kindCaption, double value, const QString& unitText);

    // Drops results as the mode says; without keep-result every mode acts as
    // All. Empties the measurement store in every mode and clears the unsaved
    // flag, so the table never asks about kept rows.
    void ClearResults(int mode);

    // The Clear button: only with results, asks 20070 (title 11070; Yes/No,
    // question icon, No default) and clears everything unless the answer is
    // No. True when the table was cleared.
    bool clearAll(Prompter& prompter, const MessageTable& messages);

    // The Remove button over the grid's current row and selection-end row,
    // in either order. Nothing when the range starts below the last result;
    // else asks 20080 (title 11080) and, unless the answer is No, removes the
    // rows up to the last result, moves the later rows and their values up
    // and renumbers them. Not QAbstractItemModel::removeRows: this one asks.
    RemoveOutcome removeResults(int currentRow, int selectionEndRow, Prompter& prompter,
                                const MessageTable& messages);

    // Sets the decimals and rewrites the value column from the value store.
    void reformat(int decimals);

    // The file's bytes: "number,kind,value,unit" CR LF for rows 1..count,
    // then the average line numbered count + 1 when one is given. Texts as
    // they stand (no quoting), UTF-8.
    QByteArray csvText(const std::optional<AverageLine>& average = std::nullopt) const;

    // Writes csvText to a temporary file renamed over `path`. On success the
    // unsaved flag is cleared; on failure lastError() holds the run-time
    // error number and a file of that name is left whole.
    bool saveCsv(const QString& path, const std::optional<AverageLine>& average = std::nullopt);
    int lastError() const { return lastError_; }

    // The Save button, only with results: asks for a file name (filter 11091),
    // writes the table and tells the user (20090, title 11090). A failed
    // write logs "frmMain:cmdResultSave Error.(n)" when a log is given and
    // tells the user (20096 with the file name); the unsaved flag stays set.
    SaveOutcome cmdResultSave(Prompter& prompter, const MessageTable& messages,
                              const std::optional<AverageLine>& average = std::nullopt,
                              const ErrorLog* log = nullptr);

    // The average line with its caption from the message table.
    static AverageLine averageLine(const MessageTable& messages, double value, const QString& unit);

    // Tells the user that a result was refused because the table is full.
    static void tellTableFull(Prompter& prompter, const MessageTable& messages);

    // Which of the table's buttons can act: Clear, Remove and Save all need
    // at least one row, kept rows of earlier pictures included.
    struct ButtonStates {
        bool clear = false;
        bool remove = false;
        bool save = false;
    };
    ButtonStates buttonStates() const { return {hasResults(), hasResults(), hasResults()}; }

    bool hasResults() const override { return count_ > 0; }
    bool unsaved() const override { return unsaved_; }
    void clearResults(int mode) override { ClearResults(mode); }
    void refresh() override { emit redrawRequested(); }
    bool isFull() const { return count_ >= kMaxResults; }
    int count() const { return count_; }
    int firstCurrentRow() const { return firstCurrentRow_; }

    Snapshot snapshot() const;
    // Puts the table back as it was; the value column is written with the
    // decimals in force now. Announces no change: going back is not one.
    void restore(const Snapshot& snapshot);

    // Value store slot `row` (0..999). Throws RunError(SubscriptOutOfRange) outside.
    double value(int row) const;
    // Cell text; row 0 is the header, rows past the count are blank. Throws
    // RunError(SubscriptOutOfRange) outside rows 0..999, columns 0..3.
    QString text(int row, int column) const;
    // Text colour of a row: grey before the first current row, else black.
    QColor rowColor(int row) const;

    // QAbstractTableModel
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

signals:
    // The rows, the first current row or the unsaved flag are about to change
    // through an operation of the table (a result added, a clear, a removal
    // the user agreed to); a saved file and restore() are no such change.
    void aboutToChange();
    // A new picture: the rows shown so far became earlier results (or went).
    void newPicture();
    // The table was written to a file.
    void saved();
    // The measurement store must be emptied (the current picture's drawings go).
    void measurementsCleared();
    // The measurements of rows first..last must leave the store; those of
    // later rows now belong to rows numbered (last - first + 1) lower.
    void rowsRemovedFromStore(int first, int last);
    // The still picture must be drawn again.
    void redrawRequested();
    // Put the grid's selection on this row (columns 0 to 3), as if the user
    // had selected it, so that its measurement is highlighted.
    void selectionRequested(int row);
    // Count, first current row or unsaved flag changed: refresh the buttons.
    void stateChanged();

private:
    using Row = std::array<QString, kColumns>;

    void checkRow(int row) const;
    void recolour();

    std::vector<Row> rows_;       // index = row number; 0 holds the header captions
    std::vector<double> values_;  // the value store, kValueSlots entries
    int count_ = 0;
    int firstCurrentRow_ = 1;
    bool unsaved_ = false;
    bool keepResult_ = false;
    int decimals_ = 0;
    int lastError_ = 0;
};

}  // namespace tavix
