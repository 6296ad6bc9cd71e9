#pragma once

// The settings store of a test process is one of its own, never the user's; so tests may also run
// side by side. Here is what is done to it behind the toolkit's back.

/// Gives the process its store, which is empty, and gone with the process. To be called before
/// anything reads settings.
void useStoreOfItsOwn();

/// Whether anything is stored.
bool storeExists();

/// Removes what is stored, as a user may at any time.
void removeStore();
