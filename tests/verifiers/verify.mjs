// node verify.mjs FILE
//
// Shows the ceremonies that the demo service has accepted to a verifier in another language, as a
// service would: registrations first, then sign-ins with what was kept of them. Each must be accepted,
// and refused as soon as anything about it is changed. Ends with 1 where that is not so.
import { readFileSync } from "node:fs";
import { webcrypto } from "node:crypto";

// Node.js 18 keeps it to itself, and the verifier looks for it here.
globalThis.crypto ??= webcrypto;
const { verifyRegistrationResponse, verifyAuthenticationResponse } = await import(
    "@simplewebauthn/server"
);

const relyingParty = "localhost";
let failures = 0;

function expect(holds, rule) {
    console.log(`${holds ? "  ok     " : "  FAILED "} ${rule}`);
    failures += holds ? 0 : 1;
}

async function accepts(verify, request) {
    try {
        return await verify(request);
    } catch (error) {
        return { verified: false, reason: error.message };
    }
}

async function expectRefused(verify, request, changes, rule) {
    const answer = await accepts(verify, { ...request, ...changes });
    expect(!answer.verified, `refused with ${rule}`);
}

function commonRequest({ credential, challenge, origin }) {
    return {
        response: credential,
        expectedChallenge: challenge,
        expectedOrigin: origin,
        expectedRPID: relyingParty,
        requireUserVerification: true,
    };
}

/** The same credential with one byte of a part of the response changed. */
function damaged(credential, part) {
    const bytes = Buffer.from(credential.response[part], "base64url");
    bytes[bytes.length - 1] ^= 1;
    return {
        ...credential,
        response: { ...credential.response, [part]: bytes.toString("base64url") },
    };
}

async function expectRefusedUnlessAsAsked(verify, request) {
    await expectRefused(verify, request, { expectedChallenge: "AAAA" }, "another challenge");
    await expectRefused(verify, request, { expectedOrigin: "https://localhost" }, "another origin");
    await expectRefused(verify, request, { expectedRPID: "example.org" }, "another relying party");
}

async function showRegistration(ceremony) {
    const request = commonRequest(ceremony);
    const answer = await accepts(verifyRegistrationResponse, request);
    expect(answer.verified, `registration is accepted ${answer.reason ?? ""}`);
    if (!answer.verified)
        return null;
    const { fmt, aaguid, credential, credentialDeviceType, credentialBackedUp, userVerified } =
        answer.registrationInfo;
    expect(fmt === "none", "nothing is attested");
    expect(aaguid === "00000000-0000-0000-0000-000000000000", "no model is named");
    expect(credentialDeviceType === "singleDevice" && !credentialBackedUp, "not backed up");
    expect(userVerified, "the user was verified");
    expect(credential.counter === 0, "there is no counter");
    await expectRefusedUnlessAsAsked(verifyRegistrationResponse, request);
    return credential;
}

async function showSignIn(ceremony, credential, others) {
    const request = { ...commonRequest(ceremony), credential };
    const answer = await accepts(verifyAuthenticationResponse, request);
    expect(answer.verified, `sign-in is accepted ${answer.reason ?? ""}`);
    if (!answer.verified)
        return;
    expect(answer.authenticationInfo.userVerified, "the user was verified");
    await expectRefusedUnlessAsAsked(verifyAuthenticationResponse, request);
    for (const part of ["signature", "clientDataJSON", "authenticatorData"]) {
        const response = damaged(ceremony.credential, part);
        await expectRefused(verifyAuthenticationResponse, request, { response }, `a damaged ${part}`);
    }
    for (const other of others) {
        const swapped = { ...credential, publicKey: other.publicKey };
        await expectRefused(verifyAuthenticationResponse, request, { credential: swapped },
            "the key of another passkey");
    }
}

const ceremonies = readFileSync(process.argv[2], "utf8").trim().split("\n").map(JSON.parse);
const registered = new Map();
const signedIn = new Set();
for (const ceremony of ceremonies) {
    const id = ceremony.credential.id;
    console.log(`${ceremony.ceremony} ${id}`);
    if (ceremony.ceremony === "registration") {
        registered.set(id, await showRegistration(ceremony));
    } else {
        const others = [...registered.values()].filter((other) => other && other.id !== id);
        await showSignIn(ceremony, registered.get(id), others);
        signedIn.add(id);
    }
}
expect(registered.size === 2 && signedIn.size === 2, "a passkey of each kind has registered and signed in");
process.exit(failures === 0 ? 0 : 1);
