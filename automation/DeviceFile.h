#pragma once
// A device's table: frequency in kHz (as text) and the values of up to three controls, held ascending
// by frequency. Its file is plain text: the controls' names on the first line, then one row a line,
// fields separated by "," with no quoting. These are the table's rules without a window: reading,
// writing, sorting, and finding the row for a frequency.

#include "forms/Grid.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

namespace tv {

// Rows read from a file stop here: the table is searched on every frequency change.
constexpr int kMaxDeviceRows = 1025;

// Takes the first comma-separated field off the line: the text before the first ",", or the whole
// line (which then becomes empty) when there is none.
QString GetDeviceData(QString& line);

// What a device file held, once it was found and was not empty.
struct DeviceFileContents {
    QString header;             // the first line
    QStringList controlNames;   // 0 to 3 names
    std::vector<GridRow> rows;  // in the file's order; frequency and three values
    QStringList recordLines;    // the data lines that became rows, in order
    QString message;            // the box to show the operator: excess rows, a bad frequency ("" none)
};
// Reads a device file's bytes. decimalSeparator is the one frequencies are checked with.
DeviceFileContents ReadDeviceFile(const QByteArray& bytes, const QString& filename, int device,
                                  QChar decimalSeparator);
// The file for n controls (names and rows as they stand): no header line and no rows when n is 0.
QByteArray WriteDeviceFile(int n, const QStringList& controlNames, const std::vector<GridRow>& rows);

// The frequency of column 0 as the table compares it, in single precision: raises 13 for a text that
// isn't a number and 6 for one that a single can't hold.
float DeviceFrequency(const QString& text);
// Ascending by frequency; rows whose frequency isn't a number go last, in their order.
void SortDeviceRows(std::vector<GridRow>& rows);
// Whether a row has anything to show for n controls (n above 3 counts as 3; 0: every row).
bool DeviceRowHasValues(const GridRow& row, int n);
// The row to show for the radio's frequency: the nearest usable row within tolerancePercent of it,
// -1 when none. Raises 9 for an empty table and 13 / 6 for a frequency cell that isn't a number.
int FindDeviceRow(const std::vector<GridRow>& rows, int depth, int n, double tolerancePercent,
                  double radioFreq);

}  // namespace tv
