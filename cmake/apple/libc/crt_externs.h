// The environment, for libraries.
#pragma once

extern "C" char*** _NSGetEnviron();
