#pragma once

#include <QString>

// The name of a meter display item code, empty for codes the meter does not define
// (0, 13 to 100, above 141).
QString DisplayItemName(int code);
