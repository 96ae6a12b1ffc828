// Microphone level, and closing the panel that shows this page.
'use strict';

const microphone = document.getElementById('microphone');
const status = document.getElementById('status');
const meter = document.getElementById('meter');
const level = document.getElementById('level');
const orb = document.getElementById('orb');

const explanations = {
  NotAllowedError: 'Kelo may not use the microphone.',
  NotFoundError: 'There is no microphone. Connect one and try again.',
  NotReadableError: 'The microphone is in use by another program.',
};

let running = null;

function show(value) {
  const percent = Math.round(value * 100);
  if (Number(meter.getAttribute('aria-valuenow')) !== percent) {
    meter.setAttribute('aria-valuenow', percent);
  }
  level.style.transform = `scaleX(${value})`;
  orb.style.transform = `scale(${1 + value * 0.7})`;
}

function stop(text) {
  if (running) {
    running.stream.getTracks().forEach((track) => track.stop());
    running.context.close();
    running = null;
  }
  show(0);
  document.body.classList.remove('listening');
  microphone.textContent = 'Start microphone';
  status.textContent = text;
}

function measure() {
  if (!running) return;
  const { analyser, samples } = running;
  analyser.getFloatTimeDomainData(samples);
  const power = samples.reduce((sum, sample) => sum + sample * sample, 0) / samples.length;
  // Loudness is heard in decibels: from -60 (silence) to -6 (loud).
  const decibels = 10 * Math.log10(power + 1e-12);
  show(Math.min(1, Math.max(0, (decibels + 60) / 54)));
  requestAnimationFrame(measure);
}

async function start() {
  status.textContent = 'Starting the microphone…';
  const stream = await navigator.mediaDevices.getUserMedia({ audio: true });
  const context = new AudioContext();
  const analyser = context.createAnalyser();
  analyser.fftSize = 1024;
  context.createMediaStreamSource(stream).connect(analyser);
  running = { stream, context, analyser, samples: new Float32Array(analyser.fftSize) };
  await context.resume();
  stream.getTracks()[0].addEventListener('ended', () => stop('The microphone was disconnected.'));
  document.body.classList.add('listening');
  microphone.textContent = 'Stop microphone';
  status.textContent = 'Listening.';
  measure();
}

microphone.addEventListener('click', async () => {
  if (running) {
    stop('The microphone is off.');
    return;
  }
  microphone.disabled = true;
  try {
    await start();
  } catch (error) {
    stop(explanations[error.name] || 'The microphone could not be started.');
  }
  microphone.disabled = false;
});

const closeButton = document.getElementById('close');
closeButton.addEventListener('click', () => {
  const handler = window.webkit && window.webkit.messageHandlers && window.webkit.messageHandlers.kelo;
  if (handler) handler.postMessage('close');
  else location.assign('/');
});

// From here on somebody answers a click.
microphone.disabled = false;
closeButton.disabled = false;

window.addEventListener('pagehide', () => stop('The microphone is off.'));
