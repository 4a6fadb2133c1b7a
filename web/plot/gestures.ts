// Zooming and moving by mouse, wheel and fingers, so that the page itself can still be scrolled by them.
import { select } from "d3-selection";
import { zoom, zoomIdentity, zoomTransform, Transform, Zoom } from "d3-zoom";

const FARTHEST = 5000;

export class Gestures {
    private readonly zoom: Zoom;
    private isAsked = false;

    /**
     * On `node`, whose width is its own and whose content moves along the axes that `axes` names. The wheel zooms with
     * the control key, fingers zoom by two; one finger and the wheel alone are the page's.
     */
    constructor(private readonly node: Element, private readonly axes: "x" | "xy", changed: () => void) {
        const guard = (event: Event) => {
            const isPages = event instanceof WheelEvent ? !event.ctrlKey && !event.metaKey
                : event instanceof MouseEvent ? event.button !== 0
                : (event as TouchEvent).touches.length < 2;
            if (isPages) event.stopImmediatePropagation();
        };
        for (const type of ["wheel", "mousedown", "touchstart"]) {
            node.addEventListener(type, guard, { capture: true, passive: true });
        }
        this.zoom = zoom().filter(() => true).scaleExtent([1, FARTHEST]);
        this.zoom.on("zoom", () => {
            if (!this.isAsked) changed();
        });
        select(node).call(this.zoom).style("touch-action", axes === "x" ? "pan-y" : "pan-x pan-y")
            .on("dblclick.zoom", null);
    }

    /** Where the content stands while nothing is zoomed, in pixels of the node. */
    setExtent(left: number, top: number, right: number, bottom: number): void {
        const [upper, lower] = this.axes === "x" ? [-Infinity, Infinity] : [top, bottom];
        this.zoom.extent([[left, top], [right, bottom]]).translateExtent([[left, upper], [right, lower]]);
    }

    get transform(): Transform {
        return zoomTransform(this.node);
    }

    /** `k` times as large, with (`x`, `y`) of what is not zoomed at the place (`left`, `top`). Reports no change. */
    show(k: number, x: number, left: number, y = 0, top = 0): void {
        this.isAsked = true;
        const scale = Math.min(Math.max(k, 1), FARTHEST);
        const wanted = zoomIdentity.translate(left - scale * x, this.axes === "x" ? 0 : top - scale * y).scale(scale);
        select(this.node).call(this.zoom.transform, wanted);
        this.isAsked = false;
    }
}
