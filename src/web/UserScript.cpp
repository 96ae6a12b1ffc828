#include "web/UserScript.h"

namespace kelo::web {

const std::string_view hidePasskeyButtonsScript = R"JS((function(){
  function hide(){
    document.querySelectorAll('button').forEach(function(b){
      var t=(b.textContent||'').trim();
      if(t==='Sign in with passkey'||t==='Waiting for passkey…'){
        (b.parentElement||b).style.display='none';
      }
    });
  }
  hide();
  try{ new MutationObserver(hide).observe(document.documentElement,{childList:true,subtree:true}); }catch(e){}
  document.addEventListener('DOMContentLoaded',hide);
})();)JS";

} // namespace kelo::web
