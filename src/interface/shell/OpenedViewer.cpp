#include "interface/shell/OpenedViewer.h"
