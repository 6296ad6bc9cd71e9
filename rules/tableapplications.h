#pragma once

#include <QString>

class QTableWidget;

/// Name of the application in a row: the first cell's text, trimmed; empty without an item there.
QString applicationInRow(const QTableWidget &table, int row);

/// First row of an application, -1 when there is none.
int rowOfApplication(const QTableWidget &table, const QString &application);
