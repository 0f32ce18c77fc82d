#include "StudySource.h"

namespace Ovg {

StudySource::~StudySource() = default;

} // namespace Ovg
