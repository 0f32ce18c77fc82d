#pragma once

#include "SampleSeries.h"

/// The sample: two studies of one patient, the first with two series, and one study of another patient.
std::vector<SampleSeries> sampleSeries();

/// A PET series for the second study, in the place of its CT.
std::vector<SampleSeries> fusionSeries();

/// Series of \a inInstances instances in all, 100 in each and ten series in each study, for measurements.
std::vector<SampleSeries> manyInstances(int inInstances);
