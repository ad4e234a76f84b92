#include "pages/FlatText.h"
