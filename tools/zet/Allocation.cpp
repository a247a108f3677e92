// How jemalloc, with which this program is linked where it is installed, is to keep memory. Frames that pools
// let go of while others are in hand give theirs to the next one, whichever thread that is on, instead of
// going back to the system, which clears what it gives.

extern "C" {
/// As jemalloc documents it. By default, large memory goes back at once, and each processor has memory of its
/// own.
extern const char* const malloc_conf;
const char* const malloc_conf = "oversize_threshold:0,narenas:1";
}
