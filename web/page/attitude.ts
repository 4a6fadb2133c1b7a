// The attitude: the horizon as it is seen from the aircraft.
import { picture, svg, text } from "../plot/svg";

const SIZE = 200;
const MIDDLE = SIZE / 2;
const RADIUS = MIDDLE - 4;
const PIXELS_PER_DEGREE = 2.6;
const BANKS = [-60, -45, -30, -20, -10, 0, 10, 20, 30, 45, 60];

/** A line every five degrees, those of whole tens longer and with their number. */
function ladder(): SVGElement[] {
    const rungs: SVGElement[] = [];
    for (let degrees = -80; degrees <= 80; degrees += 5) {
        if (degrees === 0) continue;
        const isTen = degrees % 10 === 0;
        const half = isTen ? 24 : 11;
        const y = MIDDLE - degrees * PIXELS_PER_DEGREE;
        rungs.push(svg("line", { class: "rung", x1: MIDDLE - half, x2: MIDDLE + half, y1: y, y2: y }));
        if (isTen) rungs.push(text(MIDDLE + half + 4, y + 4, String(Math.abs(degrees))));
    }
    return rungs;
}

function bankScale(): SVGElement {
    return svg("g", {}, ...BANKS.map(degrees => svg("line", {
        class: "tick", x1: MIDDLE, x2: MIDDLE, y1: 4, y2: degrees % 30 === 0 ? 17 : 12,
        transform: `rotate(${degrees} ${MIDDLE} ${MIDDLE})`,
    })));
}

export class AttitudeDial {
    /** Turns against the bank, and what is in it sinks with the nose up. */
    private readonly world: SVGGElement;
    private readonly ground: SVGGElement;
    readonly element: SVGSVGElement;

    constructor() {
        this.ground = svg("g", {},
            svg("rect", { class: "sky", x: -SIZE, y: -2 * SIZE, width: 3 * SIZE, height: 2 * SIZE + MIDDLE }),
            svg("rect", { class: "earth", x: -SIZE, y: MIDDLE, width: 3 * SIZE, height: 3 * SIZE }),
            svg("line", { class: "horizon", x1: -SIZE, x2: 2 * SIZE, y1: MIDDLE, y2: MIDDLE }), ...ladder());
        this.world = svg("g", {}, this.ground,
            svg("path", { class: "pointer", d: `M${MIDDLE} 18l7 12h-14Z` }));
        const clip = svg("clipPath", { id: "attitude-clip" }, svg("circle", { cx: MIDDLE, cy: MIDDLE, r: RADIUS }));
        this.element = picture(SIZE, SIZE, svg("defs", {}, clip),
            svg("g", { "clip-path": "url(#attitude-clip)" }, this.world), bankScale(),
            svg("path", { class: "aircraft", d: `M${MIDDLE - 62} ${MIDDLE}h36l0 9M${MIDDLE + 62} ${MIDDLE}h-36l0 9` }),
            svg("circle", { class: "nose", cx: MIDDLE, cy: MIDDLE, r: 4 }),
            svg("circle", { class: "rim", cx: MIDDLE, cy: MIDDLE, r: RADIUS }));
        this.element.setAttribute("class", "attitude");
    }

    /** Level and dim where nobody knows. */
    show(pitch = NaN, bank = NaN): void {
        const isKnown = !Number.isNaN(pitch + bank);
        this.element.classList.toggle("off", !isKnown);
        if (!isKnown) pitch = bank = 0;
        this.world.setAttribute("transform", `rotate(${(-bank).toFixed(1)} ${MIDDLE} ${MIDDLE})`);
        this.ground.setAttribute("transform", `translate(0 ${(pitch * PIXELS_PER_DEGREE).toFixed(1)})`);
    }
}
