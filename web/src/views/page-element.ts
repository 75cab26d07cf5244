// The base of the page's elements: they render into the page itself, so that labels, focus and styles cross their
// borders.
import { LitElement } from "lit";

export class PageElement extends LitElement {
    protected override createRenderRoot(): HTMLElement {
        return this;
    }
}
