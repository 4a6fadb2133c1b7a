// Made by scripts/protocol-schema: what docs/protocol.schema.json says, as types.

export interface PairRequest {
    password?: string | null;
}

export interface PairResponse {
    accepted: boolean;
    session_token?: string;
    reason?: string;
}

export interface SimInfo {
    sim: string;
    version: string;
}

export interface FlightsPayload {
    flights: FlightListing[];
}

export interface FlightListing {
    name: string;
    path: string;
    /** Seconds since 2001-01-01 00:00:00 UTC. */
    modified_at: number;
}

export interface LoadFlightRequest {
    path: string;
}

export interface OkPayload {
    ok: boolean;
}

export interface LoadScriptRequest {
    triggers: ScriptTrigger[];
}

export interface ScriptTrigger {
    id: string;
    condition_kind: string;
    condition: Record<string, string | number | boolean | null>;
    action_kind: string;
    action: Record<string, string | number | boolean | null>;
}

export interface UnresolvedFixesPayload {
    unresolved_fixes: string[];
}

export interface CatchUpRequest {
    since_elapsed_s?: number | null;
}

export interface RecordedFlight {
    samples: TrackSample[];
    fired: FiredTriggerEvent[];
}

export interface TrackSample {
    elapsed_s: number;
    lat?: number;
    lon?: number;
    alt_ft: number;
    agl_ft?: number;
    gear_down?: boolean;
    throttle_ratio?: number[];
    mixture_ratio?: number[];
    prop_ratio?: number[];
    flap_ratio?: number;
    gear_ratio?: number;
    bank_deg?: number;
    pitch_deg?: number;
    autopilot_on?: boolean;
}

export interface FiredTriggerEvent {
    trigger_id: string;
    elapsed_s: number;
    action_kind: string;
}

export interface DatarefNamesParams {
    datarefs: DatarefName[];
}

export interface DatarefName {
    name: string;
}

export interface DatarefSetParams {
    datarefs: DatarefSetEntry[];
}

export interface DatarefSetEntry {
    name: string;
    value: number;
    index?: number | null;
}

export interface RunCommandRequest {
    name: string;
}

export interface MoveToPreservingAglRequest {
    lat: number;
    lon: number;
}

export interface ApplyAttitudeRequest {
    pitch_deg: number;
    bank_deg: number;
    ias_kts: number;
    throttle: number;
}

export interface ErrorPayload {
    message: string;
}

/** Of each kind of request: its parameters, and the data of the answer. */
export interface Messages {
    pair: { params: PairRequest | null; data: PairResponse };
    sim_info: { params: undefined; data: SimInfo };
    list_flights: { params: undefined; data: FlightsPayload };
    load_flight: { params: LoadFlightRequest; data: OkPayload };
    load_script: { params: LoadScriptRequest; data: UnresolvedFixesPayload };
    recording_start: { params: undefined; data: OkPayload };
    recording_stop: { params: undefined; data: OkPayload };
    catch_up: { params: CatchUpRequest | null; data: RecordedFlight };
    dataref_subscribe_values: { params: DatarefNamesParams; data: Record<string, number> };
    dataref_set_values: { params: DatarefSetParams; data: OkPayload };
    run_command: { params: RunCommandRequest; data: OkPayload };
    move_to_preserving_agl: { params: MoveToPreservingAglRequest; data: OkPayload };
    apply_attitude: { params: ApplyAttitudeRequest; data: OkPayload };
}
