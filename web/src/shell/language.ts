// Entry of page.js, which loads the page in the language that the browser asks for.

/** The page's script by language; the build puts it here. */
declare const PAGES: Record<string, string>;

const language = navigator.languages.map((one) => one.slice(0, 2)).find((one) => one in PAGES);
void import(PAGES[language ?? "en"]!);
