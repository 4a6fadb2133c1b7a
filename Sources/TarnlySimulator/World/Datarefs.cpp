#include "TarnlySimulator/World/Datarefs.hpp"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <string_view>

#include "TarnlySimulator/Flight/Mixing.hpp"
#include "TarnlySimulator/World/Parts.hpp"

namespace tarnly::simulator {
namespace {

using enum ValueType;

/// Datarefs of one folder and one kind: their names, separated by spaces. `size` is the number of elements or
/// bytes.
struct DatarefGroup {
    const char* folder;
    ValueType type;
    std::size_t size;
    bool isWritable;
    const char* names;
};

constexpr DatarefGroup groups[] = {
    {"sim/cockpit2/switches/", integer, 1, true,
     "landing_lights_on taxi_light_on beacon_on strobe_lights_on navigation_lights_on avionics_power_on "
     "no_smoking "
     "fasten_seat_belts camera_power_on clutch_engage auto_brake_level dump_fuel jet_sync_mode puffers_on "
     "yaw_damper_on tot_ener_audio water_scoop parachute_deploy jato_on tailhook_deploy canopy_open"},
    {"sim/cockpit2/switches/", singles, 16, true,
     "landing_lights_switch generic_lights_switch panel_brightness_ratio instrument_brightness_ratio"},
    {"sim/cockpit2/controls/", single, 1, true,
     "elevator_trim aileron_trim rudder_trim speedbrake_ratio parking_brake_ratio left_brake_ratio "
     "right_brake_ratio "
     "yoke_pitch_ratio yoke_roll_ratio yoke_heading_ratio total_pitch_ratio total_roll_ratio "
     "total_heading_ratio "
     "wingsweep_ratio thrust_vector_ratio dihedral_ratio incidence_ratio water_rudder_deploy_ratio"},
    {"sim/cockpit2/electrical/", singles, 8, false,
     "bus_volts bus_load_amps battery_amps generator_amps inverter_volts"},
    {"sim/cockpit2/electrical/", integers, 8, true, "battery_on generator_on inverter_on cross_tie_array"},
    {"sim/cockpit2/engine/actuators/", singles, 2, true,
     "cowl_flap_ratio carb_heat_ratio primer_ratio governor_on idle_speed_ratio fuel_pump_spring"},
    {"sim/cockpit2/engine/actuators/", integers, 2, true,
     "ignition_on ignition_key starter_hit fuel_pump_on igniter_on auto_ignite_on fadec_on prop_sync_on"},
    {"sim/cockpit2/engine/indicators/", singles, 2, false,
     "CHT_deg_C oil_pressure_psi oil_temperature_deg_C oil_quantity_ratio fuel_flow_kg_sec fuel_pressure_psi "
     "torque_n_mtr power_watts prop_speed_rpm N1_percent N2_percent ITT_deg_C thrust_n "
     "carburetor_temperature_C"},
    {"sim/cockpit2/gauges/indicators/", single, 1, false,
     "airspeed_kts_pilot airspeed_kts_copilot altitude_ft_pilot altitude_ft_copilot vvi_fpm_pilot "
     "vvi_fpm_copilot "
     "pitch_electric_deg_pilot roll_electric_deg_pilot pitch_vacuum_deg_pilot roll_vacuum_deg_pilot "
     "heading_AHARS_deg_mag_pilot heading_vacuum_deg_mag_pilot compass_heading_deg_mag slip_deg "
     "sideslip_degrees "
     "turn_rate_heading_deg_pilot turn_rate_roll_deg_pilot radio_altimeter_height_ft_pilot total_energy_fpm "
     "suction_1_ratio suction_2_ratio mach_pilot true_airspeed_kts_pilot wind_heading_deg_mag "
     "wind_speed_kts"},
    {"sim/cockpit2/gauges/actuators/", single, 1, true,
     "barometer_setting_in_hg_pilot barometer_setting_in_hg_copilot radio_altimeter_bug_ft_pilot "
     "airspeed_bug_kts_pilot altitude_bug_ft_pilot artificial_horizon_adjust_deg_pilot"},
    {"sim/cockpit2/radios/actuators/", integer, 1, true,
     "com1_frequency_hz com1_standby_frequency_hz com2_frequency_hz com2_standby_frequency_hz "
     "nav1_frequency_hz "
     "nav1_standby_frequency_hz nav2_frequency_hz nav2_standby_frequency_hz adf1_frequency_hz "
     "adf2_frequency_hz "
     "dme_frequency_hz transponder_code transponder_mode audio_selection_com1 audio_selection_com2 "
     "audio_selection_nav1 audio_selection_nav2 audio_com_selection marker_audio HSI_source_select_pilot"},
    {"sim/cockpit2/radios/actuators/", single, 1, true,
     "nav1_obs_deg_mag_pilot nav2_obs_deg_mag_pilot hsi_obs_deg_mag_pilot adf1_card_heading_deg_mag_pilot "
     "audio_volume_com1 audio_volume_com2 audio_volume_nav1 audio_volume_nav2 audio_volume_dme"},
    {"sim/cockpit2/radios/indicators/", single, 1, false,
     "nav1_bearing_deg_mag nav2_bearing_deg_mag nav1_hdef_dots_pilot nav1_vdef_dots_pilot "
     "nav2_hdef_dots_pilot "
     "nav2_vdef_dots_pilot nav1_dme_distance_nm nav2_dme_distance_nm gps_dme_distance_nm gps_bearing_deg_mag "
     "adf1_bearing_deg_mag adf2_bearing_deg_mag nav1_dme_speed_kts gps_dme_time_min"},
    {"sim/cockpit2/radios/indicators/", data, 150, false, "nav1_nav_id nav2_nav_id adf1_nav_id gps_nav_id"},
    {"sim/cockpit2/autopilot/", integer, 1, true,
     "autothrottle_enabled heading_mode altitude_mode flight_director_mode airspeed_is_mach backcourse_on "
     "bank_angle_mode autopilot_source trim_position altitude_hold_armed alt_fpa_mode"},
    {"sim/cockpit2/autopilot/", integer, 1, false,
     "heading_status nav_status approach_status altitude_hold_status glideslope_status vvi_status "
     "speed_status "
     "pitch_status roll_status vnav_status TOGA_status gpss_status autothrottle_on otto_is_trimming_up"},
    {"sim/cockpit2/autopilot/", single, 1, true,
     "airspeed_dial_kts_mach heading_dial_deg_mag_pilot vvi_dial_fpm altitude_dial_ft altitude_hold_ft "
     "sync_hold_pitch_deg sync_hold_roll_deg set_roll_deg"},
    {"sim/cockpit2/annunciators/", integer, 1, false,
     "master_caution master_warning master_accept autopilot_disconnect low_vacuum low_voltage fuel_quantity "
     "hydraulic_pressure speedbrake GPWS ice afterburners_on gear_unsafe gear_warning stall_warning "
     "cabin_door_open"},
    {"sim/cockpit2/annunciators/", integers, 2, false,
     "engine_fires fuel_pressure oil_pressure oil_temperature generator_off chip_detected"},
    {"sim/cockpit2/clock_timer/", integer, 1, true,
     "timer_mode timer_running timer_elapsed_time_sec date_is_showing"},
    {"sim/cockpit2/fuel/", single, 1, false,
     "fuel_totalizer_init_kg fuel_level_indicated_left fuel_level_indicated_right"},
    {"sim/cockpit2/ice/", integer, 1, true,
     "ice_all_on ice_surfce_on ice_pitot_heat_on_pilot ice_pitot_heat_on_copilot ice_window_heat_on "
     "ice_AOA_heat_on"},
    {"sim/flightmodel/position/", real, 1, false, "local_x local_y local_z lat_ref lon_ref"},
    {"sim/flightmodel/position/", single, 1, false,
     "local_ax local_ay local_az beta M Prad Qrad Rrad P_dot Q_dot R_dot true_theta true_phi true_psi "
     "mag_psi_old"},
    {"sim/flightmodel/position/", singles, 4, true, "q"},
    {"sim/flightmodel/forces/", single, 1, false,
     "g_axil g_side fside_total fnrml_total faxil_total L_total M_total N_total lift_path_axis "
     "drag_path_axis"},
    {"sim/flightmodel/weight/", single, 1, true, "m_fixed m_jettison"},
    {"sim/flightmodel/weight/", single, 1, false, "m_total"},
    {"sim/flightmodel2/gear/", singles, 3, false,
     "tire_vertical_deflection_mtr tire_rotation_angle_deg tire_rotation_speed_rad_sec "
     "tire_steer_actual_deg"},
    {"sim/flightmodel2/gear/", integers, 3, false, "on_ground on_grass on_noisy"},
    {"sim/flightmodel2/wing/", singles, 32, false,
     "aileron1_deg aileron2_deg elevator1_deg flap1_deg flap2_deg rudder1_deg spoiler1_deg speedbrake1_deg"},
    {"sim/flightmodel2/engines/", singles, 2, false,
     "throttle_used_ratio propeller_rotation_angle_deg engine_rotation_angle_deg "
     "thrust_reverser_deploy_ratio"},
    {"sim/flightmodel2/misc/", singles, 16, false, "door_open_ratio tow_ratio custom_slider_ratio"},
    {"sim/aircraft/view/", data, 40, false, "acf_tailnum acf_ICAO acf_author"},
    {"sim/aircraft/view/", data, 260, false, "acf_descrip acf_notes acf_relative_path acf_livery_path"},
    {"sim/aircraft/view/", single, 1, false,
     "acf_Vso acf_Vs acf_Vfe acf_Vno acf_Vne acf_Vmca acf_Vyse acf_asi_kts"},
    {"sim/aircraft/engine/", integer, 1, false, "acf_num_engines"},
    {"sim/aircraft/engine/", single, 1, false,
     "acf_throtmax_FWD acf_throtmax_REV acf_RSC_redline_prp acf_pmax"},
    {"sim/aircraft/gear/", single, 1, false, "acf_h_eqlbm acf_gear_steers acf_nw_steerdeg1"},
    {"sim/aircraft/weight/", single, 1, false, "acf_m_empty acf_m_max acf_m_fuel_tot acf_cgY_original"},
    {"sim/weather/aircraft/", single, 1, false,
     "barometer_current_pas ambient_temperature_c wind_speed_kts_now wind_direction_degt_now gravity_mss "
     "speed_sound_ms visibility_reported_sm thermal_alt_msl_m rain_percent_now turbulence_now"},
    {"sim/weather/aircraft/", singles, 13, false, "wind_altitude_msl_m wind_speed_msc wind_direction_degt"},
    {"sim/weather/region/", single, 1, true,
     "sealevel_pressure_pas sealevel_temperature_c visibility_now_sm rain_percent runway_friction "
     "variability_pct"},
    {"sim/time/", integer, 1, true, "local_date_days sim_speed ground_speed use_system_time"},
    {"sim/time/", integer, 1, false, "paused is_in_replay hobbs_running"},
    {"sim/time/", single, 1, false, "hobbs_time framerate_period gpu_time_per_frame_sec_approx"},
    {"sim/operation/failures/", integer, 1, true,
     "rel_engfai0 rel_engfai1 rel_engfir0 rel_engfir1 rel_pitot rel_pitot2 rel_static rel_static2 rel_vacuum "
     "rel_vacuum2 "
     "rel_gear_act rel_flap_act rel_batter0 rel_genera0 rel_genera1 rel_esys rel_esys2 rel_lites_land "
     "rel_otto "
     "rel_servo_ailn rel_servo_elev rel_servo_rudd rel_g_alt rel_g_asi rel_g_hsi rel_gps rel_nav1 rel_nav2 "
     "rel_adf1 "
     "rel_dme rel_comsit rel_fuepmp0 rel_fuepmp1 rel_lbrakes rel_rbrakes rel_tire1 rel_tire2 rel_tire3 "
     "rel_birdstrike"},
    {"sim/operation/", integer, 1, false, "misc_enabled network_enabled prefs_loaded"},
    {"sim/graphics/view/", integer, 1, false, "view_type window_width window_height view_is_external"},
    {"sim/graphics/view/", single, 1, true,
     "field_of_view_deg pilots_head_x pilots_head_y pilots_head_z pilots_head_psi"},
    {"sim/version/", integer, 1, false, "xplane_internal_version sim_build_number"},
};

constexpr std::size_t addOnCount = 40;
constexpr auto flapRatio = "sim/cockpit2/controls/flap_ratio";
/// In Latin-1, as an add-on of old may have it.
constexpr auto awkwardName = "addon/caf\xE9/temperature";

struct Text {
    const char* name;
    const char* text;
};

constexpr Text texts[] = {
    {"sim/aircraft/view/acf_tailnum", "N42SIM"},
    {"sim/aircraft/view/acf_ICAO", "TWIN"},
    {"sim/aircraft/view/acf_author", "Jos\xC3\xA9 \xC3\x81lvarez"},
    {"sim/aircraft/view/acf_descrip", "Light twin of the stand-in simulator"},
    {"sim/cockpit2/radios/indicators/gps_nav_id", "RWY07"},
};

double initialNumber(const std::string& name, ValueType type, std::size_t element) {
    const double chance = fraction(mix(mixText(name) + element));
    return type == integer || type == integers ? double(chance < 0.3) : chance;
}

Value initialValue(const std::string& name, ValueType type, std::size_t size) {
    if (type == data) return std::string(size, '\0');
    if (!isArray(type)) return initialNumber(name, type, 0);
    std::vector<double> numbers(size);
    for (std::size_t element = 0; element < size; ++element)
        numbers[element] = initialNumber(name, type, element);
    return numbers;
}

Dataref keptDataref(std::string name, ValueType type, std::size_t size, bool isWritable) {
    Dataref out;
    out.kept = initialValue(name, type, size);
    out.name = std::move(name);
    out.type = type;
    out.isWritable = isWritable;
    return out;
}

void addBound(std::span<const FlightBinding> bindings, std::vector<Dataref>& out) {
    for (const FlightBinding& binding : bindings) {
        Dataref dataref;
        dataref.name = binding.name;
        dataref.type = binding.type;
        dataref.isWritable = binding.write != nullptr;
        dataref.flightValue = out.size();
        out.push_back(std::move(dataref));
    }
}

void addGroup(const DatarefGroup& group, std::vector<Dataref>& out) {
    for (const auto word : parts(group.names, ' '))
        out.push_back(
            keptDataref(group.folder + std::string(word), group.type, group.size, group.isWritable));
}

void setKnownValues(std::vector<Dataref>& out) {
    const auto named = [&](std::string_view name) -> Value& {
        return std::ranges::find(out, name, &Dataref::name)->kept;
    };
    for (const Text& text : texts)
        std::get<std::string>(named(text.name)).replace(0, std::string_view(text.text).size(), text.text);
    named("sim/aircraft/engine/acf_num_engines") = 2.0;
    named("sim/cockpit2/radios/actuators/com1_frequency_hz") = 11825.0;
    named("sim/cockpit2/radios/actuators/transponder_code") = 7000.0;
    named("sim/cockpit2/switches/landing_lights_on") = 0.0;
    named("sim/cockpit2/gauges/actuators/barometer_setting_in_hg_pilot") = 29.92;
    named("sim/time/sim_speed") = 1.0;
    named("sim/time/paused") = 0.0;
    named("sim/version/xplane_internal_version") = 124000.0;
}

void addOddValues(std::vector<Dataref>& out) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const auto add = [&](const char* name, ValueType type, Value value) {
        Dataref dataref;
        dataref.name = name;
        dataref.type = type;
        dataref.kept = std::move(value);
        out.push_back(std::move(dataref));
    };
    add("standin/odd/infinite", single, infinity);
    add("standin/odd/negative_infinite", real, -infinity);
    add("standin/odd/not_a_number", single, std::numeric_limits<double>::quiet_NaN());
    add("standin/odd/array_with_infinity", singles, std::vector<double>{1, infinity, 3});
    add("standin/odd/empty_array", singles, std::vector<double>{});
}

void addNumbered(const char* format, std::size_t count, bool isAddOn, std::vector<Dataref>& out) {
    constexpr ValueType types[] = {single, integer, real, singles};
    for (std::size_t number = 0; number < count; ++number) {
        char name[80];
        std::snprintf(name, sizeof name, format, number / 100, number);
        const ValueType type = types[number % std::size(types)];
        out.push_back(keptDataref(name, type, 4, number % 3 != 0));
        out.back().isAddOn = isAddOn;
    }
}

} // namespace

std::vector<Dataref> stockDatarefs(const DatarefOptions& options) {
    std::vector<Dataref> out;
    out.reserve(std::max<std::size_t>(options.datarefs, 1000));
    addBound(flightDatarefs(), out);
    addBound(leverDatarefs(options.leverLists), out);
    if (options.noFlapRatio) std::erase_if(out, [](const Dataref& each) { return each.name == flapRatio; });
    for (const DatarefGroup& group : groups)
        addGroup(group, out);
    setKnownValues(out);
    addOddValues(out);
    addNumbered("addon/twin/systems_%zu/state_%02zu", addOnCount, true, out);
    if (out.size() < options.datarefs)
        addNumbered("sim/aircraft/padding/section_%03zu/value_%06zu", options.datarefs - out.size(), false,
                    out);
    out.push_back(keptDataref(awkwardName, single, 1, true));
    out.back().isAwkward = true;
    return out;
}

} // namespace tarnly::simulator
