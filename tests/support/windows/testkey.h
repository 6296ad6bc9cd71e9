#pragma once

#include <QString>

/// Path of the key that stands in the place of HKEY_CURRENT_USER in this test process, below that
/// of other processes.
QString testKey();
