#include "base/Clock.h"

#include <chrono>

namespace corvelle {

double now()
{
    using namespace std::chrono;
    return duration<double>(system_clock::now().time_since_epoch()).count();
}

} // namespace corvelle
