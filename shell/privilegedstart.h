#pragma once

/// Where the process has been given more privileges than those who have started it have themselves,
/// by file capabilities for instance, forgets all by which they could make it load code of theirs:
/// the arguments, some of which the toolkit would obey, and every environment variable that is not
/// known to be harmless. Call it before there is an application object. Elsewhere it does nothing.
void guardPrivilegedStart(int &argc, char **argv);
