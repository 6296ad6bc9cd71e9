#pragma once

class QFrame;
class QString;

/// Small pill with a coral dot and a text, as the pages show beside their titles. The caller puts
/// it into a layout, which then owns it.
QFrame *makeBadge(const QString &text);
