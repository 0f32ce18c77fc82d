#include "KyDICOMObjectInterface.h"

KyDICOMObjectInterface::~KyDICOMObjectInterface() = default;
