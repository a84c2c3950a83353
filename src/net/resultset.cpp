#include "net/resultset.h"

ResultSetData ResultSet;
