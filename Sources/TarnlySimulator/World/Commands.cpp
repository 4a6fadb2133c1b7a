#include "TarnlySimulator/World/Commands.hpp"

#include <algorithm>
#include <cstdio>

#include "TarnlySimulator/World/Parts.hpp"

namespace tarnly::simulator {
namespace {

using Kind = CommandEffect::Kind;

struct Acting {
    const char* name;
    const char* description;
    CommandEffect effect;
};

constexpr auto landingLights = "sim/cockpit2/switches/landing_lights_on";
constexpr auto taxiLight = "sim/cockpit2/switches/taxi_light_on";
constexpr auto strobes = "sim/cockpit2/switches/strobe_lights_on";
constexpr auto beacon = "sim/cockpit2/switches/beacon_on";
constexpr auto navigationLights = "sim/cockpit2/switches/navigation_lights_on";
constexpr auto gear = "sim/cockpit2/controls/gear_handle_down";
constexpr auto flaps = "sim/cockpit2/controls/flap_handle_request_ratio";
constexpr auto speedBrake = "sim/cockpit2/controls/speedbrake_ratio";
constexpr auto parkingBrake = "sim/cockpit2/controls/parking_brake_ratio";
constexpr auto paused = "sim/time/paused";
constexpr auto servos = "sim/cockpit2/autopilot/servos_on";
constexpr auto flightDirector = "sim/cockpit2/autopilot/flight_director_mode";
constexpr auto throttle = "sim/cockpit2/engine/actuators/throttle_ratio_all";
constexpr auto mixture = "sim/cockpit2/engine/actuators/mixture_ratio_all";
constexpr auto propeller = "sim/cockpit2/engine/actuators/prop_ratio_all";

constexpr Acting acting[] = {
    {"sim/lights/landing_lights_toggle", "Landing lights toggle.", {Kind::toggle, landingLights, 0}},
    {"sim/lights/landing_lights_on", "Landing lights on.", {Kind::set, landingLights, 1}},
    {"sim/lights/landing_lights_off", "Landing lights off.", {Kind::set, landingLights, 0}},
    {"sim/lights/taxi_lights_toggle", "Taxi lights toggle.", {Kind::toggle, taxiLight, 0}},
    {"sim/lights/strobe_lights_toggle", "Strobe lights toggle.", {Kind::toggle, strobes, 0}},
    {"sim/lights/beacon_lights_toggle", "Beacon lights toggle.", {Kind::toggle, beacon, 0}},
    {"sim/lights/nav_lights_toggle", "Navigation lights toggle.", {Kind::toggle, navigationLights, 0}},
    {"sim/flight_controls/landing_gear_toggle", "Landing gear toggle.", {Kind::toggle, gear, 0}},
    {"sim/flight_controls/landing_gear_up", "Landing gear up.", {Kind::set, gear, 0}},
    {"sim/flight_controls/landing_gear_down", "Landing gear down.", {Kind::set, gear, 1}},
    {"sim/flight_controls/flaps_up", "Flaps up a notch.", {Kind::add, flaps, -0.25}},
    {"sim/flight_controls/flaps_down", "Flaps down a notch.", {Kind::add, flaps, 0.25}},
    {"sim/flight_controls/speed_brakes_toggle", "Speed brakes toggle.", {Kind::toggle, speedBrake, 0}},
    {"sim/flight_controls/brakes_toggle_max", "Parking brake toggle.", {Kind::toggle, parkingBrake, 0}},
    {"sim/operation/pause_toggle", "Pause the simulation.", {Kind::toggle, paused, 0}},
    {"sim/operation/pause_on", "Pause on.", {Kind::set, paused, 1}},
    {"sim/operation/pause_off", "Pause off.", {Kind::set, paused, 0}},
    {"sim/operation/reset_flight", "Reset to the start of the flight.", {Kind::restartFlight, "", 0}},
    {"sim/autopilot/servos_toggle", "Autopilot servos toggle.", {Kind::toggle, servos, 0}},
    {"sim/autopilot/servos_on", "Autopilot servos on.", {Kind::set, servos, 1}},
    {"sim/autopilot/servos_off_any", "Autopilot servos off.", {Kind::set, servos, 0}},
    {"sim/autopilot/fdir_toggle", "Flight director toggle.", {Kind::toggle, flightDirector, 0}},
    {"sim/engines/throttle_up", "Throttle up a bit.", {Kind::add, throttle, 0.05}},
    {"sim/engines/throttle_down", "Throttle down a bit.", {Kind::add, throttle, -0.05}},
    {"sim/engines/throttle_full", "Throttle full.", {Kind::set, throttle, 1}},
    {"sim/engines/throttle_idle", "Throttle idle.", {Kind::set, throttle, 0}},
    {"sim/engines/mixture_up", "Mixture richer.", {Kind::add, mixture, 0.05}},
    {"sim/engines/mixture_down", "Mixture leaner.", {Kind::add, mixture, -0.05}},
    {"sim/engines/prop_up", "Propeller coarse to fine.", {Kind::add, propeller, 0.05}},
    {"sim/engines/prop_down", "Propeller fine to coarse.", {Kind::add, propeller, -0.05}},
};

struct CommandGroup {
    const char* folder;
    const char* names;
};

/// Accepted without any effect.
constexpr CommandGroup idle[] = {
    {"sim/view/",
     "forward_with_panel forward_with_hud forward_with_nothing chase circle tower runway_view ridealong "
     "linear_spot "
     "still_spot default_view glance_left glance_right straight_down free_camera track_weapon"},
    {"sim/general/",
     "left right up down forward backward zoom_in zoom_out rot_up rot_down rot_left rot_right"},
    {"sim/autopilot/",
     "heading altitude_hold vertical_speed level_change NAV approach back_course heading_up heading_down "
     "heading_sync altitude_up altitude_down altitude_sync vertical_speed_up vertical_speed_down "
     "airspeed_up airspeed_down airspeed_sync autothrottle_toggle wing_leveler pitch_sync"},
    {"sim/radios/",
     "com1_standy_flip com2_standy_flip nav1_standy_flip nav2_standy_flip obs1_up obs1_down obs2_up "
     "obs2_down "
     "adf1_card_up adf1_card_down transponder_12_up transponder_34_up stby_com1_coarse_up "
     "stby_com1_coarse_down stby_com1_fine_up_833 stby_com1_fine_down_833"},
    {"sim/instruments/",
     "barometer_up barometer_down barometer_2992 DG_sync_mag timer_start_stop timer_reset panel_bright_up "
     "panel_bright_down ah_ref_up ah_ref_down map_zoom_in map_zoom_out"},
    {"sim/systems/",
     "avionics_toggle avionics_on avionics_off battery_1_toggle generator_1_toggle generator_2_toggle "
     "seatbelt_sign_toggle no_smoking_toggle pre_rotate_toggle"},
    {"sim/ice/",
     "alternate_static_port anti_ice_toggle pitot_heat0_tog pitot_heat1_tog window_heat_tog wing_heat0_tog"},
    {"sim/fuel/",
     "fuel_pump_1_on fuel_pump_1_off fuel_pump_2_on fuel_pump_2_off fuel_selector_lft fuel_selector_rgt "
     "fuel_selector_all fuel_selector_none"},
    {"sim/starters/", "engage_starter_1 engage_starter_2 shut_down_1 shut_down_2"},
    {"sim/magnetos/", "magnetos_off_1 magnetos_left_1 magnetos_right_1 magnetos_both_1 magnetos_both_2"},
    {"sim/GPS/",
     "g1000n1_direct g1000n1_menu g1000n1_fpl g1000n1_proc g1000n1_clr g1000n1_ent g1000n3_fpl "
     "g430n1_zoom_in "
     "g430n1_zoom_out g430n1_cdi g430n1_obs g430n1_msg"},
    {"sim/operation/",
     "quit screenshot video_record_toggle show_menu toggle_main_menu reload_aircraft "
     "flightmodel_speed_change "
     "load_situation_1 save_situation_1 contact_atc cycle_dump"},
    {"sim/replay/", "replay_toggle replay_off rep_begin rep_play_fr rep_play_rf rep_pause rep_end"},
    {"sim/map/", "show_toggle zoom_in zoom_out"},
};

std::string describe(std::string_view name) {
    std::string out(name);
    std::ranges::replace(out, '_', ' ');
    return out + ".";
}

} // namespace

std::vector<Command> stockCommands(std::size_t atLeast) {
    std::vector<Command> out;
    out.reserve(std::max<std::size_t>(atLeast, 300));
    for (const Acting& each : acting)
        out.push_back({each.name, each.description, &each.effect, 0});
    for (const CommandGroup& group : idle) {
        for (const auto word : parts(group.names, ' '))
            out.push_back({group.folder + std::string(word), describe(word), nullptr, 0});
    }
    for (std::size_t number = 0; out.size() < atLeast; ++number) {
        char name[80];
        std::snprintf(name, sizeof name, "sim/padding/section_%03zu/command_%06zu", number / 100, number);
        out.push_back({name, "Does nothing.", nullptr, 0});
    }
    return out;
}

} // namespace tarnly::simulator
