#include "RecordRoundTrip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    orbitledge::fuzz::checkRecord<orbitledge::SubscriptionMutationResponse>(data, size);
    return 0;
}
