#include "settings/settingspanel.h"

#include "widgets/checkindicator.h"
#include "widgets/darkcombobox.h"
#include "widgets/namedwidgets.h"

#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>

using namespace Qt::StringLiterals;

namespace {

constexpr int rowBelowAll = 100;

} // namespace

SettingsPanel::SettingsPanel(const QString &title)
    : m_frame(new QFrame),
      m_layout(new QGridLayout(m_frame))
{
    m_frame->setObjectName("panel"_L1);
    m_layout->setContentsMargins(24, 20, 24, 20);
    m_layout->setHorizontalSpacing(14);
    m_layout->setVerticalSpacing(12);
    m_layout->setColumnMinimumWidth(0, 92);
    m_layout->setColumnStretch(0, 0);
    m_layout->setColumnStretch(1, 1);
    m_layout->addWidget(makeLabel(title, u"panelTitle"_s), 0, 0, 1, 2);
    // Beside a taller panel the rows stay together at the top.
    m_layout->setRowStretch(rowBelowAll, 1);
}

QLineEdit *SettingsPanel::addEdit(const QString &label, const QString &text)
{
    auto *edit = new QLineEdit(text);
    addField(label, edit);
    return edit;
}

QComboBox *SettingsPanel::addChoice(const QString &label, const QStringList &items,
                                    const QString &current)
{
    auto *box = new DarkComboBox;
    box->addItems(items);
    box->setCurrentText(current);
    addField(label, box);
    return box;
}

QCheckBox *SettingsPanel::addCheck(const QString &label, bool checked)
{
    auto *box = new DarkCheckBox(label);
    box->setChecked(checked);
    m_layout->addWidget(box, m_row++, 0, 1, 2);
    return box;
}

void SettingsPanel::addField(const QString &label, QWidget *control)
{
    QLabel *caption = makeLabel(label, u"metricLabel"_s);
    caption->setBuddy(control); // its name for screen readers
    m_layout->addWidget(caption, m_row, 0);
    m_layout->addWidget(control, m_row++, 1);
}
