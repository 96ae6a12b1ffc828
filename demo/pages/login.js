// Signing in with a passkey, in browsers that have them.
'use strict';

const button = document.getElementById('passkey');
const status = document.getElementById('status');

const fromBase64Url = (text) =>
  Uint8Array.from(atob(text.replace(/-/g, '+').replace(/_/g, '/')), (c) => c.charCodeAt(0));
const toBase64Url = (buffer) =>
  btoa(String.fromCharCode(...new Uint8Array(buffer)))
    .replace(/\+/g, '-').replace(/\//g, '_').replace(/=+$/, '');

async function askForPasskey() {
  const reply = await fetch('/api/account/passkey/auth/options', { method: 'POST' });
  if (!reply.ok) throw new Error('options');
  const options = await reply.json();
  const credential = await navigator.credentials.get({
    publicKey: {
      challenge: fromBase64Url(options.challenge),
      rpId: options.rpId,
      timeout: options.timeout,
      userVerification: options.userVerification,
    },
  });
  const { response } = credential;
  return {
    id: credential.id,
    rawId: toBase64Url(credential.rawId),
    type: credential.type,
    authenticatorAttachment: credential.authenticatorAttachment,
    clientExtensionResults: credential.getClientExtensionResults(),
    response: {
      clientDataJSON: toBase64Url(response.clientDataJSON),
      authenticatorData: toBase64Url(response.authenticatorData),
      signature: toBase64Url(response.signature),
      userHandle: toBase64Url(response.userHandle || new ArrayBuffer(0)),
    },
  };
}

async function signIn() {
  const assertion = await askForPasskey();
  const { csrfToken } = await (await fetch('/api/auth/csrf')).json();
  const reply = await fetch('/api/auth/callback/credentials', {
    method: 'POST',
    headers: { 'X-Auth-Return-Redirect': 'true' },
    body: new URLSearchParams({
      csrfToken,
      passkeyAssertion: JSON.stringify(assertion),
      callbackUrl: location.origin,
      json: 'true',
    }),
  });
  const { url } = await reply.json();
  location.assign(url);
}

button.addEventListener('click', async () => {
  if (!window.PublicKeyCredential) {
    status.textContent = 'This browser has no passkeys. Sign in with your password instead.';
    return;
  }
  button.disabled = true;
  button.textContent = 'Waiting for passkey…';
  status.textContent = '';
  try {
    await signIn();
  } catch (error) {
    status.textContent = error.name === 'NotAllowedError'
      ? 'No passkey was used. Try again, or use your password.'
      : 'Signing in did not work. Try again, or use your password.';
  }
  button.disabled = false;
  button.textContent = 'Sign in with passkey';
});
