#pragma once

#include <QJsonArray>
#include <QList>
#include <QString>

#include <optional>

/// Measured values of one figure, in the order in which they were taken.
struct Sample
{
    QList<double> values;

    double median() const { return quantile(0.5); }
    double quantile(double share) const;
};

/// Each value of `sample` through the value of `reference` that was taken beside it.
Sample ratios(const Sample &sample, const Sample &reference);

/// One table of figures: printed for people, written as JSON for programs.
class Report
{
public:
    /// A figure with its spread: the middle half of the values.
    void add(const QString &load, const QString &figure, const Sample &sample, const QString &unit);
    /// A figure that is held against a bar, a ratio if it has no unit; `atMost` tells on which side
    /// of the bar it has to be.
    void addAgainst(const QString &load, const QString &figure, const Sample &sample, double bar,
                    bool atMost = true, const QString &unit = QStringLiteral("x"));

    /// Prints what was added since the last call.
    void print();
    /// Prints the rest and writes all rows to the file, unless `path` is empty. Returns the exit
    /// code of a benchmark: 3 when a bar was missed, 1 when the file cannot be written.
    int finish(const QString &path);

private:
    void addRow(const QString &load, const QString &figure, const Sample &sample,
                const QString &unit, std::optional<double> bar, bool atMost);
    bool write(const QString &path) const;

    QJsonArray m_rows;
    qsizetype m_printed = 0;
    bool m_allMet = true;
};
