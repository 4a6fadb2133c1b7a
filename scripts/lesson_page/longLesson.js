// Stands in for a page's sockets, before its scripts run: a lesson that has been flown for `hours`, circuits of some
// minutes, recorded from its begin on, and goes on at two values a second.
(hours => {
    const have = hours * 7200;
    const began = performance.now();
    const names = { lat: "latitude", lon: "longitude", pitch: "theta", bank: "phi", heading: "psi" };
    /** The circuit: an oval, 500 samples long, a little elsewhere each time. */
    const at = number => {
        const turn = number / 500 * 2 * Math.PI;
        const round = Math.floor(number / 500);
        return { lat: 47.4 + 0.02 * Math.sin(turn) + 0.0004 * (round % 7), lon: 8.5 + 0.06 * Math.cos(turn), pitch: 3 * Math.sin(9 * turn),
            bank: 20 * Math.sin(5 * turn), heading: 360 - turn * 180 / Math.PI % 360, alt: 1400 + 500 * Math.sin(turn) };
    };
    const sampleOf = number => {
        const { lat, lon, alt, bank, pitch } = at(number);
        return { elapsed_s: number / 2, lat, lon, alt_ft: alt, agl_ft: alt - 900, gear_down: true, throttle_ratio: [0.5 + bank / 100],
            mixture_ratio: [1], prop_ratio: [1], flap_ratio: 0.25, gear_ratio: 1, bank_deg: bank, pitch_deg: pitch, autopilot_on: false };
    };
    const valuesOf = (number, wanted) => {
        const now = at(number);
        const known = { "sim/flightmodel/misc/h_ind": now.alt, "sim/time/paused": 0 };
        for (const key of Object.keys(names)) known[`sim/flightmodel/position/${names[key]}`] = now[key];
        return Object.fromEntries([...wanted].map(name => [name, known[name] ?? number % 50]));
    };
    const flown = () => have + Math.floor((performance.now() - began) / 500);
    window.WebSocket = class {
        constructor() {
            this.wanted = new Set();
            setTimeout(() => this.onopen?.({}));
        }

        send(text) {
            const { type, req_id, params } = JSON.parse(text);
            setTimeout(() => this.say({ type, req_id, data: this.answer(type, params) }));
        }

        answer(type, params) {
            if (type === "pair") return { accepted: true };
            if (type === "list_flights") return { flights: [] };
            if (type === "dataref_subscribe_values") {
                for (const { name } of params.datarefs) this.wanted.add(name);
                if (params.datarefs.length > 1) this.push();
                return valuesOf(flown(), this.wanted);
            }
            if (type !== "catch_up") return { ok: true };
            const since = params.since_elapsed_s ?? -1;
            const samples = [];
            for (let number = Math.max(0, Math.floor(since * 2) + 1); number <= flown(); ++number) samples.push(sampleOf(number));
            return { samples, fired: [] };
        }

        /** All that the page would have seen by now, and then twice a second. */
        push() {
            const tell = number => this.say({ type: "dataref_subscribe_values", data: valuesOf(number, this.wanted) });
            for (let number = 0; number < have; ++number) tell(number);
            window.isFlying = true;
            this.timer = setInterval(() => tell(flown()), 500);
        }

        say(message) {
            this.onmessage?.({ data: JSON.stringify(message) });
        }

        close() {
            clearInterval(this.timer);
            this.onclose?.({});
        }
    };
})
