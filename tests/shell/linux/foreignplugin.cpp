// A plug-in of somebody else's, which the toolkit loads when it is told its name and where it is.
// It passes for one of those that adapt the toolkit to a desktop.
#include <QObject>
#include <QtPlugin>

class ForeignPlugin : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QPA.QPlatformThemeFactoryInterface.5.1" FILE
                          "foreignplugin.json")
};

#include "foreignplugin.moc"
