#include "OvEnumValue.h"

OvEnumValue::~OvEnumValue() = default;
