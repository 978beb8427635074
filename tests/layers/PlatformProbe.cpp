// Compiles in the platform layer's context: platform headers only.
#include <platform/sensor/CameraTime.h>
#include <platform/util/Seconds.h>

int main()
{
    return util::seconds(0.0).value() == 0.0 ? 0 : 1;
}
