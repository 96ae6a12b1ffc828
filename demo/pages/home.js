// Keeps the page true while it is open: a passkey may be registered beside it, and codes expire.
'use strict';

async function refresh() {
  if (document.hidden) return;
  let reply;
  try {
    reply = await fetch('/');
  } catch {
    return; // the service is away; the page stays as it is
  }
  if (reply.redirected) {
    location.reload();
    return;
  }
  const fresh = new DOMParser().parseFromString(await reply.text(), 'text/html');
  for (const id of ['passkeys', 'code']) {
    const shown = document.getElementById(id);
    const next = fresh.getElementById(id);
    if (next && shown.innerHTML !== next.innerHTML) shown.replaceChildren(...next.childNodes);
  }
}

setInterval(refresh, 5000);
document.addEventListener('visibilitychange', refresh);
window.addEventListener('focus', refresh);
