#include "OpenedURLs.h"
