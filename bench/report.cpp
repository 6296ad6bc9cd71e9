#include "bench/report.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <cstdio>

using namespace Qt::StringLiterals;

double Sample::quantile(double share) const
{
    if (values.isEmpty())
        return 0;
    QList<double> sorted = values;
    std::ranges::sort(sorted);
    return sorted.at(static_cast<qsizetype>(std::lround(share * double(sorted.size() - 1))));
}

Sample ratios(const Sample &sample, const Sample &reference)
{
    Sample result;
    const qsizetype pairs = std::min(sample.values.size(), reference.values.size());
    for (qsizetype i = 0; i < pairs; ++i)
        result.values.append(sample.values.at(i) / reference.values.at(i));
    return result;
}

void Report::add(const QString &load, const QString &figure, const Sample &sample,
                 const QString &unit)
{
    addRow(load, figure, sample, unit, std::nullopt, true);
}

void Report::addAgainst(const QString &load, const QString &figure, const Sample &sample,
                        double bar, bool atMost, const QString &unit)
{
    addRow(load, figure, sample, unit, bar, atMost);
}

void Report::addRow(const QString &load, const QString &figure, const Sample &sample,
                    const QString &unit, std::optional<double> bar, bool atMost)
{
    QJsonObject row{{"load"_L1, load},
                    {"figure"_L1, figure},
                    {"median"_L1, sample.median()},
                    {"lowerQuartile"_L1, sample.quantile(0.25)},
                    {"upperQuartile"_L1, sample.quantile(0.75)},
                    {"runs"_L1, sample.values.size()},
                    {"unit"_L1, unit}};
    if (bar) {
        const bool met = atMost ? sample.median() <= *bar : sample.median() >= *bar;
        row.insert("bar"_L1, *bar);
        row.insert("barIs"_L1, atMost ? "at most"_L1 : "at least"_L1);
        row.insert("met"_L1, met);
        m_allMet = m_allMet && met;
    }
    m_rows.append(row);
}

void Report::print()
{
    if (m_printed == 0 && !m_rows.isEmpty())
        std::printf("%-11s %-46s %14s %21s  %s\n", "load", "figure", "median", "middle half",
                    "bar");
    for (; m_printed < m_rows.size(); ++m_printed) {
        const QJsonObject row = m_rows.at(m_printed).toObject();
        QString bar;
        if (row.contains("bar"_L1))
            bar = u"%1 %2: %3"_s.arg(row.value("barIs"_L1).toString())
                      .arg(row.value("bar"_L1).toDouble())
                      .arg(row.value("met"_L1).toBool() ? "met"_L1 : "MISSED"_L1);
        std::printf("%-11s %-46s %8.3f %-5s %10.3f - %8.3f  %s\n",
                    qPrintable(row.value("load"_L1).toString()),
                    qPrintable(row.value("figure"_L1).toString()),
                    row.value("median"_L1).toDouble(), qPrintable(row.value("unit"_L1).toString()),
                    row.value("lowerQuartile"_L1).toDouble(),
                    row.value("upperQuartile"_L1).toDouble(), qPrintable(bar));
    }
    std::fflush(stdout);
}

int Report::finish(const QString &path)
{
    print();
    if (!path.isEmpty() && !write(path)) {
        std::fprintf(stderr, "%s cannot be written\n", qPrintable(path));
        return 1;
    }
    return m_allMet ? 0 : 3;
}

bool Report::write(const QString &path) const
{
    QFile file(path);
    const QByteArray text = QJsonDocument(m_rows).toJson();
    return file.open(QFile::WriteOnly) && file.write(text) == text.size() && file.flush();
}
