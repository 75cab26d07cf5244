#pragma once

#include "base/FileDescriptor.h"
#include "base/ReadWrite.h"
