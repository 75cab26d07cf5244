// Entry of launch.js: keeps the socket's token where the page finds it, then shows the page in place of the
// address that worked once.
import { TOKEN_KEY } from "./socket.js";

const token = document.querySelector<HTMLMetaElement>('meta[name="socket-token"]')?.content;
if (token) localStorage.setItem(TOKEN_KEY, token);
location.replace("/");
