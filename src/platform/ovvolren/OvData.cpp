#include "OvData.h"

OvData::~OvData() = default;
