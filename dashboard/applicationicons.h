#pragma once

#include <QIcon>

#include <memory>

class QString;

/// The icons that the desktop shows for running applications. Each desktop has its own way, and
/// one of them is linked in.
class ApplicationIcons
{
public:
    ApplicationIcons() = default;
    ApplicationIcons(const ApplicationIcons &) = delete;
    ApplicationIcons &operator=(const ApplicationIcons &) = delete;
    virtual ~ApplicationIcons() = default;

    /// The icon of process `pid`, which runs the executable at `path`; one that cannot be drawn
    /// where nothing is known of either. Never waits for a file whose file system may not answer.
    virtual QIcon iconOf(const QString &path, quint32 pid) = 0;
};

/// Creates the way that the program was linked with. Never null.
std::unique_ptr<ApplicationIcons> makeApplicationIcons();
