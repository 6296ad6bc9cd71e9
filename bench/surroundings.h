#pragma once

#include "bench/loads.h"
#include "bench/programs.h"
#include "bench/screen.h"
#include "bench/traffic.h"
#include "tests/support/testdesktop.h"

#include <QTemporaryDir>

#include <optional>

/// Everything that the programs of the benchmark find: a desktop, the `desktop` load and traffic.
/// Needs the application object and a network of the benchmark's own.
class Surroundings
{
public:
    Surroundings();

    Screen &screen() { return *m_screen; }
    Traffic &traffic() { return m_traffic; }
    /// A folder for the settings of one program.
    QString home(const QString &program) const;
    /// The processes that are no part of what is measured.
    const QSet<pid_t> &besides() const { return m_besides; }

private:
    QTemporaryDir m_home;
    QTemporaryDir m_programs;
    TestDesktop m_desktop;
    std::optional<Program> m_manager;
    std::optional<Screen> m_screen;
    std::optional<Load> m_load;
    Traffic m_traffic;
    QSet<pid_t> m_besides;
};

/// What the reports call these surroundings.
inline const QString surroundingsName = QStringLiteral("desktop");

/// Lets the traffic flow meanwhile.
void pass(qint64 milliseconds);

/// Lets a program that has just been shown come to rest.
void settleDown();

/// Executable of the monitor that is measured.
QString monitorPath();
