#pragma once

#include <QStringList>

class QCheckBox;
class QComboBox;
class QFrame;
class QGridLayout;
class QLineEdit;
class QWidget;

/// Builds a panel of the Control Center: a frame with a title and one control a row. Whoever puts
/// the frame into a layout owns it with all controls.
class SettingsPanel
{
public:
    explicit SettingsPanel(const QString &title);

    QFrame *frame() const { return m_frame; }

    QLineEdit *addEdit(const QString &label, const QString &text);
    /// A box that offers `items`; it shows the first one when `current` is none of them.
    QComboBox *addChoice(const QString &label, const QStringList &items, const QString &current);
    QCheckBox *addCheck(const QString &label, bool checked);

private:
    void addField(const QString &label, QWidget *control);

    QFrame *m_frame;
    QGridLayout *m_layout;
    int m_row = 1; ///< row of the next control; the title has row 0
};
