#include "shell/basestyle.h"

// The desktop's own choice, which is the same style on most.
void chooseBaseStyle() { }
