#include "TarnlyXPlane/Attitude.hpp"
#include "TarnlyXPlane/Datarefs.hpp"
#include "TarnlyXPlane/XPlaneBackend.hpp"

namespace tarnly {
namespace {

constexpr std::chrono::seconds settleDelay(2);

} // namespace

Task<> XPlaneBackend::setDatarefNamed(std::string_view name, double value) {
    return setDataref(std::string(name), value, std::nullopt);
}

Task<> XPlaneBackend::setPosition(double latitude, double longitude, double elevation) {
    co_await setDatarefNamed(datarefs::latitude, latitude);
    co_await setDatarefNamed(datarefs::longitude, longitude);
    co_await setDatarefNamed(datarefs::elevation, elevation);
}

Task<> XPlaneBackend::moveToPreservingAgl(double latitude, double longitude) {
    const std::string aboveGround(datarefs::aboveGround);
    const std::string elevation(datarefs::elevation);
    const double aglBefore = co_await getDataref(aboveGround);
    const double elevationBefore = co_await getDataref(elevation);
    co_await setPosition(latitude, longitude, elevationBefore);
    co_await clock_.sleepFor(settleDelay);
    const double aglAfter = co_await getDataref(aboveGround);
    co_await setPosition(latitude, longitude, elevationBefore + (aglBefore - aglAfter));
}

Task<> XPlaneBackend::applyAttitude(double pitchDeg, double bankDeg, double iasKts, double throttle) {
    const std::string elevationName(datarefs::elevation);
    const std::string headingName(datarefs::psi);
    const double elevation = co_await getDataref(elevationName);
    const double heading = co_await getDataref(headingName);
    const auto velocity = localVelocity(iasKts, elevation, pitchDeg, heading);
    co_await setDatarefNamed(datarefs::theta, pitchDeg);
    co_await setDatarefNamed(datarefs::phi, bankDeg);
    co_await setDatarefNamed(datarefs::localVx, velocity.x);
    co_await setDatarefNamed(datarefs::localVy, velocity.y);
    co_await setDatarefNamed(datarefs::localVz, velocity.z);
    co_await setDatarefNamed(datarefs::rollRate, 0);
    co_await setDatarefNamed(datarefs::pitchRate, 0);
    co_await setDatarefNamed(datarefs::yawRate, 0);
    co_await setDatarefNamed(datarefs::throttleRatio, throttle);
}

} // namespace tarnly
