// Lambdas as the cases of one visitor of a variant.
#pragma once

namespace corvelle {

template<class... Cases>
struct Overloaded : Cases...
{
    using Cases::operator()...;
};
template<class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

} // namespace corvelle
