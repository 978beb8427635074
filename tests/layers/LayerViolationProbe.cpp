// Must not compile in the platform layer's context: the platform layer sits
// below the datamodel library and cannot see its headers.
#include <platform/util/Seconds.h>

#include <datamodel/model/Seconds.h>

int main()
{
    return datamodel::seconds(0.0).value() == 0.0 ? 0 : 1;
}
