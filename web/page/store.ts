// What the browser keeps: the choice of values and, if the person wants that, the password. Nothing else.

const VALUES = "tarnly.values";
const PASSWORD = "tarnly.password";

/** Browsers may refuse to keep anything; the page works without. */
function read(key: string): string | undefined {
    try {
        return localStorage.getItem(key) ?? undefined;
    } catch {
        return undefined;
    }
}

function write(key: string, value: string | undefined): void {
    try {
        if (value === undefined) localStorage.removeItem(key);
        else localStorage.setItem(key, value);
    } catch {
        // Not kept then.
    }
}

export function keptNames(): string[] {
    try {
        const names = JSON.parse(read(VALUES) ?? "[]") as unknown;
        return Array.isArray(names) ? names.filter((name): name is string => typeof name === "string") : [];
    } catch {
        return [];
    }
}

export const keepNames = (names: string[]) => write(VALUES, JSON.stringify(names));
export const keptPassword = () => read(PASSWORD);
export const keepPassword = (password: string | undefined) => write(PASSWORD, password);
