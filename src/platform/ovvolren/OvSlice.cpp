#include "OvSlice.h"

OvSlice::~OvSlice() = default;
