#pragma once

#include "base/NewFile.h"
#include "base/ReadWrite.h"
