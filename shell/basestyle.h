#pragma once

/// Chooses the toolkit's style that the sheets of theme.h build on, where the system's own one
/// would show through. Call it before there is an application object.
void chooseBaseStyle();
