// The texts of a lesson, read aloud one after the other by the browser.

export class Voice {
    /** Told when `isThere` may have changed: browsers find their voices after the page has come. */
    onVoices: () => void = () => {};
    /** Told when the browser has not read a text, with its word for why. */
    onSilence: (why: string) => void = () => {};

    private isOn = false;

    /** `language` is that of texts which do not tell theirs. */
    constructor(private readonly language: string, private readonly speech: SpeechSynthesis | undefined) {
        speech?.addEventListener?.("voiceschanged", () => this.onVoices());
    }

    get isThere(): boolean {
        return this.speech !== undefined && this.speech.getVoices().length > 0;
    }

    /** To be called as the person touches something: browsers let nothing else begin to speak. Reads `greeting`. */
    turnOn(greeting: string): void {
        this.isOn = true;
        this.speak(greeting);
    }

    /** At once, in the middle of a word. */
    turnOff(): void {
        this.isOn = false;
        this.speech?.cancel();
    }

    speak(text: string, language = this.language): void {
        if (!this.isOn || this.speech === undefined || text === "") return;
        const utterance = new SpeechSynthesisUtterance(text);
        utterance.lang = language;
        utterance.onerror = ({ error }) => {
            if (this.isOn && error !== "canceled" && error !== "interrupted") this.onSilence(error);
        };
        this.speech.speak(utterance);
    }
}
