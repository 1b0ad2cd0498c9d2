#pragma once

#include <string>
#include <vector>

#include "host/PropertyListWriter.h"

namespace quillet::host {

// One file of the data folder.
struct StoreFile {
    std::string path;  // below the data folder
    Value root;
    PropertyListFormat format;
};

// The moment for which a sample store is made.
struct SampleTime {
    double now;            // seconds since 1970-01-01 00:00:00 UTC
    double sinceMidnight;  // seconds of the local day so far
};

// The local time of this moment.
SampleTime currentSampleTime();

// A believable mail store: three accounts, one of them disabled, whose newest messages are of
// today and the others of the weeks before; every folder that the widget's segments show; names
// and subjects in several scripts; one message that stands in two files. The files are in the
// order in which to write them: the account list comes last, so that an account is known only
// when its messages are there.
std::vector<StoreFile> sampleStore(const SampleTime& time);

}  // namespace quillet::host
