#pragma once

#include "base/FolderReader.h"
