#include "OvSerializer.h"

OvSerializer::~OvSerializer() = default;
