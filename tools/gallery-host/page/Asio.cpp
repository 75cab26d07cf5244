// The parts of Boost.Asio and Boost.Beast that are no templates, compiled once.
#include <boost/asio/impl/src.hpp>
#include <boost/beast/src.hpp>
