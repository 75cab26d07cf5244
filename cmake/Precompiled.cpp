// What the precompiled headers are compiled for.
