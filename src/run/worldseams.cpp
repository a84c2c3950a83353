#include "run/worldseams.h"

RunWorldSeams RunWorld;
