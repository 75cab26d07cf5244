// How dates, sizes and lengths are written, as the browser's user does in the language of the page.
import * as text from "./en.js";

const locale = navigator.languages.find((one) => one.startsWith(text.language)) ?? text.language;

const formats = {
    moment: new Intl.DateTimeFormat(locale, { dateStyle: "long", timeStyle: "short" }),
    day: new Intl.DateTimeFormat(locale, { weekday: "long", day: "numeric", month: "long", year: "numeric" }),
    month: new Intl.DateTimeFormat(locale, { month: "short", year: "numeric" }),
    size: new Intl.NumberFormat(locale, { maximumSignificantDigits: 3 }),
};

/** A moment in milliseconds since 1970. */
export function momentText(time: number): string {
    return time === 0 ? text.unknownDay : formats.moment.format(time);
}

// At noon, so that no change of the clocks makes it another day.
const noonOf = (day: string): Date => new Date(`${day}T12:00:00`);

/** A day as YYYY-MM-DD. */
export function dayText(day: string, now = new Date()): string {
    if (day === "") return text.unknownDay;
    const days = Math.round((now.setHours(12, 0, 0, 0) - noonOf(day).getTime()) / 86_400_000);
    return days === 0 ? text.today : days === 1 ? text.yesterday : formats.day.format(noonOf(day));
}

export function monthText(day: string): string {
    return day === "" ? text.unknownDay : formats.month.format(noonOf(day));
}

/** A size in kilobytes, with the unit that suits it. */
export function sizeText(kilobytes: number): string {
    const units = ["kB", "MB", "GB", "TB"];
    let unit = 0;
    while (kilobytes >= 1000 && unit < units.length - 1) {
        kilobytes /= 1000;
        ++unit;
    }
    return `${formats.size.format(kilobytes)} ${units[unit]!}`;
}

/** A length as minutes and seconds, with hours where there are any. */
export function lengthText(ms: number): string {
    const seconds = Math.round(ms / 1000);
    const parts = [Math.floor(seconds / 3600), Math.floor(seconds / 60) % 60, seconds % 60];
    const shown = parts[0] === 0 ? parts.slice(1) : parts;
    return shown.map((part, place) => (place === 0 ? String(part) : String(part).padStart(2, "0"))).join(":");
}

/** A moment within a video: hours where there are any, and hundredths of a second. Nothing is rounded up. */
export function clockText(ms: number): string {
    const hundredths = Math.floor(Math.max(0, ms) / 10 + 1e-6);
    return `${lengthText(Math.floor(hundredths / 100) * 1000)}.${String(hundredths % 100).padStart(2, "0")}`;
}
