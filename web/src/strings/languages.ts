// Compiles only while every language has all texts.
import type * as de from "./de.js";
import type * as en from "./en.js";

type Like<Text> = Text extends string
    ? string
    : Text extends (...values: infer Values) => string
      ? (...values: Values) => string
      : { [Name in keyof Text]: Like<Text[Name]> };

export type German<Texts extends Like<typeof en> = typeof de> = Texts;
