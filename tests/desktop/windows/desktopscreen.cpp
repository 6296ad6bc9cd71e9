#include "tests/desktop/windows/desktopscreen.h"

#include "tests/support/patience.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>
#include <QPixmap>
#include <QScreen>

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// Whether two colours differ by no more than what styles and rounding make of one.
bool isLike(QRgb one, QRgb other)
{
    constexpr int tolerance = 4;
    return qAbs(qRed(one) - qRed(other)) <= tolerance
        && qAbs(qGreen(one) - qGreen(other)) <= tolerance
        && qAbs(qBlue(one) - qBlue(other)) <= tolerance;
}

/// Whether a part of a picture is like another one.
bool isAt(const QImage &picture, QPoint position, const QImage &part)
{
    for (int y = 0; y < part.height(); ++y) {
        for (int x = 0; x < part.width(); ++x) {
            if (!isLike(picture.pixel(position + QPoint(x, y)), part.pixel(x, y)))
                return false;
        }
    }
    return true;
}

/// The text in its colours and nothing around what is drawn of it.
QImage drawn(const ScreenText &text)
{
    QFont font(u"Segoe UI"_s);
    font.setPixelSize(text.size);
    font.setWeight(static_cast<QFont::Weight>(text.weight));
    const QFontMetrics metrics(font);
    QImage image(metrics.horizontalAdvance(text.text), metrics.height(), QImage::Format_RGB32);
    image.fill(text.background);
    QPainter painter(&image);
    painter.setFont(font);
    painter.setPen(text.colour);
    painter.drawText(0, metrics.ascent(), text.text);
    painter.end();
    return image;
}

QString className(HWND window)
{
    std::array<wchar_t, 256> name{};
    GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    return QString::fromWCharArray(name.data());
}

DWORD ownerOf(HWND window)
{
    DWORD pid = 0;
    GetWindowThreadProcessId(window, &pid);
    return pid;
}

BOOL CALLBACK collect(HWND window, LPARAM windows)
{
    reinterpret_cast<QList<HWND> *>(windows)->append(window);
    return TRUE;
}

void click(QPoint position, Qt::MouseButton button)
{
    const bool left = button == Qt::LeftButton;
    std::array<INPUT, 3> inputs{};
    inputs[0].mi.dwFlags = MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE;
    inputs[1].mi.dwFlags = left ? MOUSEEVENTF_LEFTDOWN : MOUSEEVENTF_RIGHTDOWN;
    inputs[2].mi.dwFlags = left ? MOUSEEVENTF_LEFTUP : MOUSEEVENTF_RIGHTUP;
    // In parts of the screen's sides, rounded up so that they are rounded down to these pixels.
    constexpr int parts = 65536;
    const auto part = [](int pixel, int side) { return (pixel * parts + side - 1) / side; };
    inputs[0].mi.dx = part(position.x(), GetSystemMetrics(SM_CXSCREEN));
    inputs[0].mi.dy = part(position.y(), GetSystemMetrics(SM_CYSCREEN));
    SendInput(inputs.size(), inputs.data(), sizeof(INPUT));
}

} // namespace

QImage screenPicture(QRect area)
{
    return QGuiApplication::primaryScreen()
        ->grabWindow(0, area.x(), area.y(), area.width(), area.height())
        .toImage()
        .convertToFormat(QImage::Format_RGB32);
}

QRect findOnScreen(const ScreenText &text, QRect area)
{
    const QImage picture = screenPicture(area);
    const QImage wanted = drawn(text);
    for (int y = 0; y <= picture.height() - wanted.height(); ++y) {
        for (int x = 0; x <= picture.width() - wanted.width(); ++x) {
            if (isAt(picture, {x, y}, wanted))
                return {area.topLeft() + QPoint(x, y), wanted.size()};
        }
    }
    return {};
}

QRect boundsOnScreen(QColor colour, QRect area)
{
    const QImage picture = screenPicture(area);
    QRect bounds;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (isLike(picture.pixel(x, y), colour.rgb()))
                bounds |= QRect(area.topLeft() + QPoint(x, y), QSize(1, 1));
        }
    }
    return bounds;
}

QList<HWND> allWindows(DWORD pid)
{
    QList<HWND> windows;
    EnumWindows(collect, reinterpret_cast<LPARAM>(&windows)); // the topmost first
    windows.removeIf([pid](HWND window) { return ownerOf(window) != pid; });
    return windows;
}

HWND visibleWindow(DWORD pid, const QString &partOfClass)
{
    const auto windows = allWindows(pid);
    for (HWND window : windows) {
        if (IsWindowVisible(window) && className(window).contains(partOfClass))
            return window;
    }
    return nullptr;
}

QRect windowGeometry(HWND window)
{
    RECT rect{};
    GetWindowRect(window, &rect);
    return {QPoint(rect.left, rect.top), QPoint(rect.right - 1, rect.bottom - 1)};
}

bool hasKeyboard(DWORD pid)
{
    return ownerOf(GetForegroundWindow()) == pid;
}

bool clickOnScreen(QPoint position, const std::function<bool()> &isSo, Qt::MouseButton button)
{
    constexpr int tries = 4;
    for (int i = 0; i < tries; ++i) {
        click(position, button);
        if (QTest::qWaitFor(isSo, patience / tries))
            return true;
    }
    return false;
}

void pressKeys(std::initializer_list<WORD> keys)
{
    for (const WORD key : keys) {
        std::array<INPUT, 2> inputs{};
        for (INPUT &input : inputs) {
            input.type = INPUT_KEYBOARD;
            input.ki.wVk = key;
        }
        inputs[1].ki.dwFlags = KEYEVENTF_KEYUP;
        SendInput(inputs.size(), inputs.data(), sizeof(INPUT));
    }
}

HWND taskBar()
{
    return FindWindowW(L"Shell_TrayWnd", nullptr);
}

QPoint lastTrayIcon()
{
    const QRect bar = windowGeometry(taskBar());
    return {bar.right() - bar.height() / 2, bar.center().y()};
}

bool trayHasBalloon()
{
    return visibleWindow(ownerOf(taskBar()), u"tooltips_class32"_s) != nullptr;
}
