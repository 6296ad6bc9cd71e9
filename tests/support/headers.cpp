// A target needs a source to have a precompiled header, which is all that is wanted of this one.
