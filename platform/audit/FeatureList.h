// The host's table of feature switches. Each entry points to a byte of the host that is
// non-zero while the feature is on; it is read when needed, never copied.
#pragma once

extern "C" {

struct ZanvexFeatureList {
    // Interfaces may bear the data-processing-unit transport tag (tag 13).
    const unsigned char* kelmNicDpuTransportTag;
};

extern const ZanvexFeatureList FeatureList;
}
