/*
 * scene.cpp: see scene.h.
 */
#include "session/scene.h"

#include "chip/trunks.h"

#include <fmt/format.h>

namespace lab::session
{

namespace
{

// What a generic port holds beside its kind.
constexpr int MODULE_PORT_PORT = 0x7ff;
constexpr int TRUNK_NUMBER = 0x3ffffff;

} // namespace

std::string Scene::name(const std::map<int, std::string> &names, int number)
{
    const auto found = names.find(number);
    return found == names.end() ? "" : found->second;
}

std::string Scene::iif_text(int iif) const
{
    const std::string known = name(iifs, iif);
    return known.empty() && iif != 0 ? fmt::format("#{}", iif) : known;
}

std::vector<std::string> Scene::interface_names() const
{
    std::vector<std::string> names;
    names.reserve(interfaces.size());
    for (const SceneInterface &interface : interfaces) {
        names.push_back(interface.name);
    }
    return names;
}

std::vector<std::string> Scene::port_names() const
{
    std::vector<std::string> names;
    names.reserve(ports.size());
    for (const auto &[number, port] : ports) {
        names.push_back(port);
    }
    return names;
}

std::string Scene::port_text(int port) const
{
    std::string known = name(ports, port);
    if (!known.empty()) {
        return known;
    }
    return port == simswitch::chip::CPU_PORT ? "CPU" : fmt::to_string(port);
}

std::string Scene::gport_text(int gport) const
{
    namespace chip = simswitch::chip;
    if (chip::gport_kind(gport) == chip::GPORT_MODULE_PORT) {
        return port_text(gport & MODULE_PORT_PORT);
    }
    if (chip::gport_kind(gport) == chip::GPORT_TRUNK) {
        const std::string known = name(trunks, gport & TRUNK_NUMBER);
        return known.empty() ? fmt::format("trunk {}", gport & TRUNK_NUMBER) : known;
    }
    return fmt::format("{:#x}", static_cast<unsigned>(gport));
}

} // namespace lab::session
