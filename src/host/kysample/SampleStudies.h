#pragma once

#include "SampleSeries.h"

/// The sample: two studies of one patient, the first with two series, and one study of another patient.
std::vector<SampleSeries> sampleSeries();

/// Series of \a inInstances instances in all, 100 in each and ten series in each study, for measurements.
std::vector<SampleSeries> manyInstances(int inInstances);
