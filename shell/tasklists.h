#pragma once

class QWidget;

/// Has the desktop's task bar and window lists leave out a window that the toolkit calls a tool,
/// where that alone does not. Call it each time before the window appears: from its show event.
void leaveOutOfTaskLists(const QWidget &window);
