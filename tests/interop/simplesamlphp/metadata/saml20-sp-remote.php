<?php
$setup = json_decode(file_get_contents(getenv('INTEROP_FOLDER') . '/setup.json'), true);
$post = [['Binding' => 'urn:oasis:names:tc:SAML:2.0:bindings:HTTP-POST', 'Location' => $setup['acs']]];
foreach (['issuer', 'channel'] as $name) {
    $metadata[$setup[$name]] = [
        'AssertionConsumerService' => $post,
        'SingleLogoutService' => $post,
        'sign.logout' => true,
        'saml20.sign.response' => strpos($_SERVER['HTTP_X_SIGNED'], 'Response') !== false,
        'saml20.sign.assertion' => strpos($_SERVER['HTTP_X_SIGNED'], 'Assertion') !== false,
    ];
}
